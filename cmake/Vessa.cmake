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

function(vessa_add_shared_library)
    get_property(objs GLOBAL PROPERTY VESSA_OBJECT_LIBS)
    add_library(vessa SHARED)
    foreach(obj IN LISTS objs)
        target_sources(vessa PRIVATE $<TARGET_OBJECTS:${obj}>)
        target_link_libraries(vessa PUBLIC ${obj})
    endforeach()
    set_target_properties(vessa PROPERTIES OUTPUT_NAME vessa)
endfunction()
