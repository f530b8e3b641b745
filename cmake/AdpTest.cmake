# Tests are compiled without optimisation, which takes half the time; what they test is compiled as it is delivered.
set(ADP_TEST_OPTIONS "$<$<CONFIG:RelWithDebInfo>:-O0;${ADP_UNCHECKED_CALLS}>")

# GoogleTest is Debian's; the target has no library packages, and compiles its sources.
if(CMAKE_CROSSCOMPILING)
    set(INSTALL_GTEST OFF CACHE INTERNAL "")
    set(BUILD_GMOCK ON CACHE INTERNAL "")
    add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
    target_compile_options(gtest PRIVATE ${ADP_TEST_OPTIONS})
    target_compile_options(gmock PRIVATE ${ADP_TEST_OPTIONS})
else()
    find_package(GTest REQUIRED GLOBAL)
    foreach(library gtest gtest_main gmock)
        add_library(${library} ALIAS GTest::${library})
    endforeach()
endif()

# GoogleTest's headers are compiled once for all tests.
file(WRITE ${PROJECT_BINARY_DIR}/generated/test_headers.cpp "int main() {}\n")
add_executable(test_headers EXCLUDE_FROM_ALL ${PROJECT_BINARY_DIR}/generated/test_headers.cpp)
target_link_libraries(test_headers PRIVATE adp_warnings adp_headers gmock)
target_compile_options(test_headers PRIVATE ${ADP_TEST_OPTIONS})
target_precompile_headers(test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)

# Here every test is a process of its own, so that none can lean on another's leavings. Where starting one is dear, under
# the emulator and with sanitizers, a program runs all of its tests at once; so each is seen in both ways.
if(CMAKE_CROSSCOMPILING OR ADP_SANITIZE OR ADP_COVERAGE)
    set(ADP_TESTS_TOGETHER ON)
endif()

# adp_add_test(NAME SOURCES source... [LIBS library...])
# One test program, run under the emulator on the target.
function(adp_add_test name)
    cmake_parse_arguments(TEST "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE ${TEST_LIBS} adp_warnings adp_headers gmock gtest_main)
    target_compile_options(${name} PRIVATE ${ADP_TEST_OPTIONS})
    target_precompile_headers(${name} REUSE_FROM test_headers)
    if(ADP_TESTS_TOGETHER)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES ENVIRONMENT GTEST_BRIEF=1 TIMEOUT 600)
    else()
        gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
    endif()
endfunction()
