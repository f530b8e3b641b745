# Header-only libraries of the build machine ({fmt}, nlohmann-json, toml++), offered alone: the folder they stand in must
# not be seen by a cross compiler, for it holds this machine's system headers too.
include_guard(GLOBAL)
set(ADP_HEADER_ONLY_DIR ${PROJECT_BINARY_DIR}/header-only)
file(MAKE_DIRECTORY ${ADP_HEADER_ONLY_DIR})
foreach(library fmt nlohmann toml++)
    find_path(ADP_${library}_DIR NAMES ${library} PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    if(NOT ADP_${library}_DIR)
        message(FATAL_ERROR "The headers of '${library}' are missing: run script/setup")
    endif()
    if(NOT IS_SYMLINK ${ADP_HEADER_ONLY_DIR}/${library})
        file(CREATE_LINK ${ADP_${library}_DIR}/${library} ${ADP_HEADER_ONLY_DIR}/${library} SYMBOLIC)
    endif()
endforeach()

add_library(adp_header_only INTERFACE)
target_include_directories(adp_header_only SYSTEM INTERFACE ${ADP_HEADER_ONLY_DIR})
# Where there is a {fmt} to link, its bulk need not be compiled with every file that uses it.
if(CMAKE_CROSSCOMPILING)
    target_compile_definitions(adp_header_only INTERFACE FMT_HEADER_ONLY)
else()
    find_package(fmt REQUIRED)
    target_link_libraries(adp_header_only INTERFACE fmt::fmt)
endif()
