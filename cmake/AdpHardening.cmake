# What makes a mistake in the code harder to use, in everything that is built here but the builds whose own run-time
# library watches (sanitizers) or that are for counting only (coverage). The test check.hardening looks at the files.
include(CheckPIESupported)
check_pie_supported()

# Tests that are compiled without optimisation take the checks of the C library's calls back: those need it.
set(ADP_UNCHECKED_CALLS -U_FORTIFY_SOURCE)

if(ADP_SANITIZE OR ADP_COVERAGE)
    return()
endif()
add_compile_options(-fstack-protector-strong -Wformat -Wformat-security)
if(CMAKE_BUILD_TYPE MATCHES Rel)  # it needs optimisation
    # One word for CMake, which drops an option that it has seen: the tests' own -U must stay behind this.
    add_compile_options("SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2")
endif()
# Programs and the virtual libraries bind at start, so that nothing stays writable that need not be. libadp does not:
# its services come from the loading process, and lazy binding stays possible.
add_link_options(LINKER:-z,relro LINKER:-z,noexecstack
                 $<$<NOT:$<STREQUAL:$<TARGET_PROPERTY:NAME>,adp>>:LINKER:-z,now>)
