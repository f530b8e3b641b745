# Strict warnings for both compilers, and the build-type switches that apply to everything.
add_library(adp_warnings INTERFACE)
target_compile_options(adp_warnings INTERFACE
    -Wall -Wextra -Wpedantic $<$<BOOL:${ADP_WERROR}>:-Werror> -Wshadow -Wconversion -Wsign-conversion -Wcast-align -Wcast-qual -Wundef
    -Wformat=2 -Wnull-dereference -Wvla -Wdouble-promotion
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
    # Where files are compiled together, their unnamed namespaces are of a file that is included.
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>
    $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes -Wmissing-prototypes>)

# adp_quickly_compiled(TARGET...)
# What asks a device or a library and prints the answer spends its time waiting: these targets are compiled for a short
# compilation, as few pieces of much the same headers.
function(adp_quickly_compiled)
    foreach(target ${ARGN})
        set_target_properties(${target} PROPERTIES UNITY_BUILD_BATCH_SIZE 20)
        target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1>)
    endforeach()
endfunction()

if(ADP_SANITIZE)
    # The checks of virtual tables and of function types need clang's C++ run-time, which a C program does not link.
    add_compile_options(-fsanitize=${ADP_SANITIZE} $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=vptr,function> -fno-sanitize-recover=all
                        -fno-omit-frame-pointer -g1)
    add_link_options(-fsanitize=${ADP_SANITIZE})
endif()
if(ADP_SANITIZE STREQUAL thread)
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${PROJECT_SOURCE_DIR}/tests/support/thread_sanitizer.h>")
endif()
if(ADP_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()
