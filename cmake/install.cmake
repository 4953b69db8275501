# What `cmake --install` puts in place: the library, its public headers, the stand-ins that it
# links at a desk, and a package file for find_package(caminfosync). They are the component
# "caminfosync", which the target of that name builds; the tools are not part of it.

include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/caminfosync)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/caminfosync)
# The same way from the stand-ins to the host root as in the build folder.
set(desk ${CMAKE_INSTALL_LIBDIR}/caminfosync)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME caminfosync)
add_dependencies(caminfosync hostroot overlap_service)

# Debian keeps liblog where the loader does not look. The folder is the desk's own, also if the
# library is linked against a copy in a sysroot.
cmake_path(GET ANDROID_LOG_LIBRARY PARENT_PATH liblog_folder)
if(CMAKE_SYSROOT)
    file(RELATIVE_PATH liblog_folder ${CMAKE_SYSROOT} ${liblog_folder})
    string(PREPEND liblog_folder /)
endif()
# One run path for both places: an edited one could be left with an empty entry, which the
# loader takes for the working directory.
set(desk_run_path "$ORIGIN/platform/host;$ORIGIN/caminfosync/platform/host;${liblog_folder}")
set_target_properties(caminfosync PROPERTIES
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "${desk_run_path}")
install(TARGETS caminfosync EXPORT caminfosync
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${headers})
install(TARGETS cutils processgroup zudebug hostroot EXPORT caminfosync
    LIBRARY DESTINATION ${desk}/platform/host
    INCLUDES DESTINATION ${headers})
install(TARGETS overlap_service LIBRARY DESTINATION ${desk}/host-root/vendor/lib64)
install(FILES platform/host/build.prop DESTINATION ${desk}/host-root)
install(FILES platform/host/OverlapService.h DESTINATION ${headers})
install(DIRECTORY common/infoSynchronizer/include/ platform/include/ DESTINATION ${headers})

install(EXPORT caminfosync NAMESPACE infosync:: FILE caminfosync-targets.cmake
    DESTINATION ${package})
configure_package_config_file(cmake/caminfosync-config.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/caminfosync-config.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/caminfosync-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/caminfosync-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/caminfosync-config-version.cmake
    cmake/FindAndroidLog.cmake
    DESTINATION ${package})
unset(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME)
