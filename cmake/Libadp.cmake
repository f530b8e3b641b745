# libadp, as a shared library (the product) and as an archive of the same objects (for the unit tests).
# Each subsystem's folder adds its sources to the target adp_objects.
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
target_compile_options(adp_objects PRIVATE $<$<CONFIG:RelWithDebInfo>:-Os>)
if(CMAKE_CROSSCOMPILING)
    target_compile_options(adp_objects PRIVATE
        $<$<CONFIG:RelWithDebInfo>:-fno-move-loop-invariants;-fno-gcse;-fno-expensive-optimizations;-mno-memcpy>)
endif()

set(symbols ${CMAKE_SOURCE_DIR}/platform/symbols)
set(export_map ${CMAKE_BINARY_DIR}/generated/libadp.map)
file(STRINGS ${symbols}/exported-functions.txt functions REGEX "^[^#]")
file(STRINGS ${symbols}/exported-data.txt data REGEX "^[^#]")
list(JOIN functions ";" function_names)
list(JOIN data ";" data_names)
string(REPLACE ";" ";\n    " export_names "${function_names};${data_names}")
file(CONFIGURE OUTPUT ${export_map} CONTENT "{\nglobal:\n    @export_names@;\nlocal:\n    *;\n};\n" @ONLY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${symbols}/exported-functions.txt
                                                               ${symbols}/exported-data.txt)

# The library is linked as C: without this CMake would add the C++ run-time libraries by name.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
add_library(adp SHARED $<TARGET_OBJECTS:adp_objects>)
target_include_directories(adp PUBLIC ${CMAKE_SOURCE_DIR}/include)
set_target_properties(adp PROPERTIES LINKER_LANGUAGE C LINK_DEPENDS ${export_map} NO_SONAME OFF)
# Exported functions call each other directly; exported tables stay open to copy relocation. The device's services come
# from the loading process, so undefined names are allowed here.
target_link_options(adp PRIVATE -Wl,--version-script=${export_map} -Wl,-Bsymbolic-functions -Wl,--gc-sections
                                -Wl,-z,lazy -Wl,--no-as-needed)
target_link_libraries(adp PRIVATE netlink_api)

add_library(adp_static STATIC $<TARGET_OBJECTS:adp_objects>)
set_target_properties(adp_static PROPERTIES OUTPUT_NAME adp)
target_include_directories(adp_static PUBLIC ${CMAKE_SOURCE_DIR}/include)
