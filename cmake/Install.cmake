# What is installed, in components: cmake --install FOLDER --component NAME.
install(TARGETS adp EXPORT adp LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
if(NOT PROJECT_IS_TOP_LEVEL)  # the other project's package has the library, and what else is for that project to say
    return()
endif()
include(CMakePackageConfigHelpers)

# adp_install_package(NAME COMPONENT)
# The targets of an export, for CMake and for pkg-config.
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/adp)
function(adp_install_package name component)
    install(EXPORT ${name} NAMESPACE adp:: FILE ${name}-targets.cmake DESTINATION ${package_folder}
            COMPONENT ${component})
    # The prefix is known when it is installed: cmake --install FOLDER --prefix PREFIX.
    set(prefix @prefix@)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/package/${name}.pc.in @ONLY)
    install(CODE "set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
                  set(file \"\${prefix}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/${name}.pc\")
                  message(STATUS \"Installing: \$ENV{DESTDIR}\${file}\")
                  configure_file(\"${PROJECT_BINARY_DIR}/package/${name}.pc.in\" \"\$ENV{DESTDIR}\${file}\" @ONLY)
                  list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${file}\")"
            COMPONENT ${component})
endfunction()

# dev: to compile and link programs
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
        FILES_MATCHING PATTERN *.h)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/adp/platform COMPONENT dev
        FILES_MATCHING PATTERN *.h PATTERN symbols EXCLUDE)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/adp-config.cmake.in ${PROJECT_BINARY_DIR}/package/adp-config.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/adp-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/adp-config.cmake ${PROJECT_BINARY_DIR}/package/adp-config-version.cmake
        DESTINATION ${package_folder} COMPONENT dev)
if(TARGET adp_status)
    install(TARGETS adp_status EXPORT adp ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
endif()
adp_install_package(adp dev)

# examples and doc: as they stand in the project, so that the links between pages lead somewhere
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT examples
        FILES_MATCHING PATTERN *.c PATTERN *.h PATTERN CMakeLists.txt)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
        FILES_MATCHING PATTERN *.md PATTERN *.svg PATTERN *.png)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)

# vdevice: in a folder of its own, so that nobody takes its driver library for a board's
set(vdevice_folder ${CMAKE_INSTALL_LIBDIR}/adp/virtual-device)
if(ADP_BUILD_VDEVICE)
    install(TARGETS netlink_api device_services virtual_device EXPORT adp-virtual-device
            LIBRARY DESTINATION ${vdevice_folder} COMPONENT vdevice)
    adp_install_package(adp-virtual-device vdevice)
    install(FILES ${PROJECT_SOURCE_DIR}/vdevice/remote/vdev_linkscan.h ${PROJECT_SOURCE_DIR}/vdevice/services/vdev_equeue.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/adp/vdevice COMPONENT vdevice)
endif()
if(TARGET vdeviced)
    install(TARGETS vdeviced vdevctl DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT vdevice)
    install(FILES ${PROJECT_BINARY_DIR}/vdeviced.service DESTINATION lib/systemd/system COMPONENT vdevice)
endif()

# tools and switchd: the programs are linked with the virtual device's libraries
if(ADP_BUILD_TOOLS)
    file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(adpsh adptrace adp-switchd PROPERTIES
        INSTALL_RPATH "$ORIGIN/${libraries};$ORIGIN/${libraries}/adp/virtual-device")
    install(TARGETS adpsh adptrace DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    install(TARGETS adptrace_library LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/adp COMPONENT tools)
    install(FILES ${PROJECT_SOURCE_DIR}/tools/wireshark/adp_switch_tag.lua DESTINATION ${CMAKE_INSTALL_DATADIR}/adp
            COMPONENT tools)
    install(TARGETS adp-switchd DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT switchd)
    install(PROGRAMS ${PROJECT_SOURCE_DIR}/switchd/daemon/adp-switchd-dot1x DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}
            COMPONENT switchd)
    install(FILES ${PROJECT_SOURCE_DIR}/switchd/daemon/switchd.toml DESTINATION ${CMAKE_INSTALL_DATADIR}/adp
            COMPONENT switchd)
    install(FILES ${PROJECT_BINARY_DIR}/adp-switchd.service DESTINATION lib/systemd/system COMPONENT switchd)
endif()

# python: the wheel's content, where Debian has packages of other projects
if(ADP_BUILD_TOOLS)
    execute_process(COMMAND ${ADP_PYTHON} -c "import setuptools, wheel" RESULT_VARIABLE without_setuptools ERROR_QUIET)
    if(without_setuptools)
        message(STATUS "The Python package is not built: python3-setuptools or python3-wheel is missing")
        return()
    endif()
    set(python_folder ${PROJECT_BINARY_DIR}/package)
    set(wheel ${python_folder}/adp-${PROJECT_VERSION}-py3-none-any.whl)
    file(GLOB_RECURSE python_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/python/adp/*.py
         ${PROJECT_SOURCE_DIR}/python/adp/*.yml ${PROJECT_SOURCE_DIR}/python/adp/py.typed
         ${PROJECT_SOURCE_DIR}/python/adp/panel/page/*)
    add_custom_command(OUTPUT ${wheel}
        COMMAND ${ADP_PYTHON} -B ${PROJECT_SOURCE_DIR}/cmake/build_wheel.py ${PROJECT_SOURCE_DIR}/python ${python_folder}
        DEPENDS ${python_sources} ${PROJECT_SOURCE_DIR}/python/pyproject.toml ${PROJECT_SOURCE_DIR}/cmake/build_wheel.py
        COMMENT "Building the Python package" VERBATIM)
    add_custom_target(python_package ALL DEPENDS ${wheel})
    install(CODE "set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/lib/python3/dist-packages\")
                  message(STATUS \"Installing: \${folder}/adp\")
                  file(REMOVE_RECURSE \"\${folder}/adp\")
                  file(ARCHIVE_EXTRACT INPUT \"${wheel}\" DESTINATION \"\${folder}\")" COMPONENT python)
    install(PROGRAMS ${PROJECT_SOURCE_DIR}/python/adp-lab ${PROJECT_SOURCE_DIR}/python/adp-panel DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT python)
endif()
