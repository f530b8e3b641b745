# GoogleTest is built from Debian's sources: the target has no library packages, and the sanitized build wants it
# instrumented like everything else.
set(INSTALL_GTEST OFF CACHE INTERNAL "")
set(BUILD_GMOCK ON CACHE INTERNAL "")
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)

# adp_add_test(NAME SOURCES source... [LIBS library...])
# One test program; every test in it becomes a ctest test of its own, run under the emulator on the target.
function(adp_add_test name)
    cmake_parse_arguments(TEST "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE ${TEST_LIBS} adp_warnings adp_headers gmock gtest_main)
    gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()

# adp_unit_tests(SUBSYSTEM source...)
# Unit tests of a subsystem of libadp against the recording driver.
function(adp_unit_tests subsystem)
    adp_add_test(test_${subsystem} SOURCES ${ARGN} LIBS adp_static recording_driver fake_system)
endfunction()
