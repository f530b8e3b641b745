# libadp, as a shared library (the product) and as an archive of the same objects (for the unit tests).
# Each subsystem's folder adds its sources to the target adp_objects, and names its unit tests.
add_library(adp_objects OBJECT)
set_target_properties(adp_objects PROPERTIES UNITY_BUILD OFF)  # the product is compiled file by file
target_link_libraries(adp_objects PRIVATE adp_warnings adp_headers)
# Nothing of the C++ run-time library is wanted in the product: no exceptions, no RTTI, no guarded statics.
target_compile_options(adp_objects PRIVATE -fno-exceptions -fno-rtti -fno-threadsafe-statics -fvisibility=hidden
                                           -fno-semantic-interposition -ffunction-sections -fdata-sections)

# The library's interface is described from its debugging data (script/abi), which costs a tenth of these files' time. A
# function that is merged with another one has none.
target_compile_options(adp_objects PRIVATE $<$<CONFIG:RelWithDebInfo>:-g>
                                           $<$<CXX_COMPILER_ID:GNU>:-fno-ipa-icf-functions>)

# The target's flash and memory are small, and what a call costs is what it costs in the driver. On the target, what the
# compiler computes ahead of time needs more saved registers than it spares instructions, and without -mno-memcpy it
# would copy what is handed over by value byte by byte.
target_compile_options(adp_objects PRIVATE $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-Os>)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL mips)
    target_compile_options(adp_objects PRIVATE
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-fno-move-loop-invariants;-fno-gcse;-fno-expensive-optimizations;-mno-memcpy>)
endif()

# adp_unit_tests(source...)
# Unit tests of a subsystem of libadp, in this folder.
function(adp_unit_tests)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    set_property(GLOBAL APPEND PROPERTY ADP_LIBRARY_TESTS ${ARGN})
endfunction()

set(symbols ${PROJECT_SOURCE_DIR}/platform/symbols)
set(export_map ${PROJECT_BINARY_DIR}/generated/libadp.map)
file(STRINGS ${symbols}/exported-functions.txt functions REGEX "^[^#]")
file(STRINGS ${symbols}/exported-data.txt data REGEX "^[^#]")
list(JOIN functions ";" function_names)
list(JOIN data ";" data_names)
string(REPLACE ";" ";\n    " export_names "${function_names};${data_names}")
file(CONFIGURE OUTPUT ${export_map} CONTENT "{\nglobal:\n    @export_names@;\nlocal:\n    *;\n};\n" @ONLY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${symbols}/exported-functions.txt
                                                               ${symbols}/exported-data.txt ${symbols}/driver-calls.txt)

# The library names the driver library that it needs, and every device has its own. This one is there to be linked with:
# it has the calls' names. It stands in a folder of its own, where no program finds it.
file(STRINGS ${symbols}/driver-calls.txt driver_calls REGEX "^[^#]")
list(JOIN driver_calls "(void) {}\nvoid " driver_names)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/generated/driver_names.c CONTENT "void @driver_names@(void) {}\n" @ONLY)
add_library(adp_driver_names SHARED ${PROJECT_BINARY_DIR}/generated/driver_names.c)
set_target_properties(adp_driver_names PROPERTIES OUTPUT_NAME netlink_api
                      LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/driver-names)

# adp_program_headers(FOLDER header...)
# Headers that programs include as <adp/FOLDER/...>, here as where they are installed.
function(adp_program_headers folder)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/include/adp/${folder})
    foreach(header ${ARGN})
        cmake_path(GET header FILENAME name)
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${header} ${PROJECT_BINARY_DIR}/include/adp/${folder}/${name} SYMBOLIC)
    endforeach()
endfunction()

# The library is linked as C: without this CMake would add the C++ run-time libraries by name.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
add_library(adp SHARED $<TARGET_OBJECTS:adp_objects>)
add_library(adp::adp ALIAS adp)
target_include_directories(adp INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                         $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
                                         $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
adp_program_headers(platform platform/netlink_api.h platform/device_services.h)
set_target_properties(adp PROPERTIES LINKER_LANGUAGE C LINK_DEPENDS ${export_map} NO_SONAME OFF BUILD_RPATH "$ORIGIN")
# Exported functions call each other directly; exported tables stay open to copy relocation. The device's services come
# from the loading process, so undefined names are allowed here.
target_link_options(adp PRIVATE -Wl,--version-script=${export_map} -Wl,-Bsymbolic-functions -Wl,--gc-sections
                                -Wl,-z,lazy -Wl,--no-as-needed $<TARGET_FILE:adp_driver_names>)
add_dependencies(adp adp_driver_names)

if(ADP_BUILD_TESTS)
    add_library(adp_static STATIC $<TARGET_OBJECTS:adp_objects>)
    set_target_properties(adp_static PROPERTIES OUTPUT_NAME adp)
    target_include_directories(adp_static PUBLIC ${PROJECT_SOURCE_DIR}/include)
endif()
