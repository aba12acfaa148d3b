# The Android utility and log libraries as Debian ships them: headers under
# /usr/include/android, libraries under /usr/lib/<triplet>/android.
set(ANDROID_INCLUDE_DIR /usr/include/android)
find_library(ANDROID_UTILS_LIB utils
    PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH REQUIRED)
find_library(ANDROID_LOG_LIB log
    PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH REQUIRED)
get_filename_component(ANDROID_LIB_DIR ${ANDROID_UTILS_LIB} DIRECTORY)

add_library(android_utils INTERFACE)
# SYSTEM: the platform headers are not warning-clean under g++.
target_include_directories(android_utils SYSTEM INTERFACE ${ANDROID_INCLUDE_DIR})
target_link_libraries(android_utils INTERFACE ${ANDROID_UTILS_LIB} ${ANDROID_LOG_LIB} pthread)
target_link_options(android_utils INTERFACE "LINKER:-rpath,${ANDROID_LIB_DIR}")
