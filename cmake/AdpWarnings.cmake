# Strict warnings as errors for both compilers, and the build-type switches that apply to everything.
add_library(adp_warnings INTERFACE)
target_compile_options(adp_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wcast-align -Wcast-qual -Wundef
    -Wformat=2 -Wnull-dereference -Wvla -Wdouble-promotion
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
    # Where files are compiled together, their unnamed namespaces are of a file that is included.
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>
    $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes -Wmissing-prototypes>)

if(ADP_SANITIZE)
    # The checks of virtual tables and of function types need clang's C++ run-time, which a C program does not link.
    add_compile_options(-fsanitize=${ADP_SANITIZE} $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=vptr,function> -fno-sanitize-recover=all
                        -fno-omit-frame-pointer -g1)
    add_link_options(-fsanitize=${ADP_SANITIZE})
endif()
if(ADP_SANITIZE STREQUAL thread)
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${CMAKE_SOURCE_DIR}/tests/support/thread_sanitizer.h>")
endif()
if(ADP_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()
