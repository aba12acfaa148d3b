# Helpers shared by every subsystem folder.

set(VESSA_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Wno-unused-parameter)
set_property(GLOBAL PROPERTY VESSA_OBJECT_LIBS "")

# vessa_add_subsystem(NAME SOURCES... [DEPENDS lower-layers...] [LIBS extra...])
# Builds one object library per folder; libvessa collects them all.
function(vessa_add_subsystem name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;LIBS" ${ARGN})
    set(target vessa_${name})
    add_library(${target} OBJECT ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
    target_compile_options(${target} PRIVATE ${VESSA_WARNINGS})
    # Verbose log lines stay in every build type; the logger's priority filters them.
    target_compile_definitions(${target} PRIVATE LOG_NDEBUG=0)
    target_link_libraries(${target} PUBLIC android_utils)
    foreach(dep IN LISTS ARG_DEPENDS)
        target_link_libraries(${target} PUBLIC vessa_${dep})
    endforeach()
    if(ARG_LIBS)
        target_link_libraries(${target} PUBLIC ${ARG_LIBS})
    endif()
    set_property(GLOBAL APPEND PROPERTY VESSA_OBJECT_LIBS ${target})
endfunction()

# vessa_internal: every subsystem in one static archive, for vessad, the tests and
# the benchmarks. libvessa: the public client API only (include/vessa/), every other
# symbol hidden; the archive supplies what the client code needs.
function(vessa_add_libraries)
    get_property(objs GLOBAL PROPERTY VESSA_OBJECT_LIBS)
    add_library(vessa_internal STATIC)
    foreach(obj IN LISTS objs)
        target_sources(vessa_internal PRIVATE $<TARGET_OBJECTS:${obj}>)
        target_link_libraries(vessa_internal PUBLIC ${obj})
    endforeach()

    add_library(vessa SHARED $<TARGET_OBJECTS:vessa_client>)
    add_library(vessa::vessa ALIAS vessa)
    target_link_libraries(vessa PRIVATE vessa_internal)
    target_include_directories(vessa PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    set(map ${PROJECT_SOURCE_DIR}/dist/libvessa.map)
    target_link_options(vessa PRIVATE LINKER:--as-needed LINKER:--exclude-libs,ALL
        LINKER:--version-script=${map})
    # A sanitizer's runtime comes with the program, not with the library.
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
        target_link_options(vessa PRIVATE LINKER:--no-undefined)
    endif()
    set_property(TARGET vessa APPEND PROPERTY LINK_DEPENDS ${map})
    set_target_properties(vessa PROPERTIES
        OUTPUT_NAME vessa
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        INSTALL_RPATH ${ANDROID_LIB_DIR})
endfunction()
