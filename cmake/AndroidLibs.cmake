# libbase and liblog as Debian ships them (android-libbase-dev, android-liblog-dev).
set(ANDROID_HOST_LIBDIR /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android)
set(ANDROID_HOST_INCLUDEDIR /usr/include/android)

foreach(lib base log)
    find_library(ANDROID_LIB_${lib} NAMES ${lib} PATHS ${ANDROID_HOST_LIBDIR} NO_DEFAULT_PATH REQUIRED)
    add_library(android::${lib} SHARED IMPORTED)
    set_target_properties(android::${lib} PROPERTIES
        IMPORTED_LOCATION ${ANDROID_LIB_${lib}}
        INTERFACE_INCLUDE_DIRECTORIES ${ANDROID_HOST_INCLUDEDIR})
endforeach()
set_property(TARGET android::base APPEND PROPERTY INTERFACE_LINK_LIBRARIES android::log)
