# Finds Android's liblog as the target infosync::log. Debian keeps it in folders of its own.

find_path(ANDROID_LOG_INCLUDE_DIR android/log.h PATH_SUFFIXES android)
find_library(ANDROID_LOG_LIBRARY log
    PATH_SUFFIXES android ${CMAKE_LIBRARY_ARCHITECTURE}/android)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(AndroidLog
    REQUIRED_VARS ANDROID_LOG_LIBRARY ANDROID_LOG_INCLUDE_DIR
    REASON_FAILURE_MESSAGE "On Debian it is in the package android-liblog-dev.")
if(AndroidLog_FOUND AND NOT TARGET infosync::log)
    add_library(infosync::log SHARED IMPORTED GLOBAL)
    set_target_properties(infosync::log PROPERTIES
        IMPORTED_LOCATION ${ANDROID_LOG_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${ANDROID_LOG_INCLUDE_DIR})
endif()
