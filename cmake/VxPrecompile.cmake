# Precompiled headers, for builds that are made often and with sanitizers. Each set is compiled once, for all targets whose
# code is generated in the same way. The optimised build has none, so it proves that each source includes what it needs.
function(vx_precompiled_set name rules position) # and the headers
    file(CONFIGURE OUTPUT ${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${name} PRIVATE ${position})
    target_link_libraries(${name} PRIVATE ${rules})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_precompile_headers(${name} PRIVATE ${ARGN})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang") # a cached file stays valid when only the time of a header is new
        target_compile_options(${name} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    endif()
    # GCC knows a header with "#pragma once" again by its bytes, comments included. ccache may take a file for current whose
    # headers differ in comments only; its "depend" mode compares bytes. The namespace leaves out what it kept without that.
    if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache")
        set_target_properties(${name} PROPERTIES CXX_COMPILER_LAUNCHER
            "${CMAKE_COMMAND};-E;env;CCACHE_DEPEND=1;CCACHE_NAMESPACE=headers-by-bytes;${CMAKE_CXX_COMPILER_LAUNCHER}")
    endif()
endfunction()

# Gives each target of a folder and those below it the set that fits. The platform layer includes nothing of the library.
function(vx_use_precompiled_sets folder)
    get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
    foreach(below IN LISTS folders)
        vx_use_precompiled_sets(${below})
    endforeach()
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        get_target_property(libraries ${target} LINK_LIBRARIES)
        get_target_property(sources ${target} SOURCES)
        if(NOT "${libraries}" MATCHES "vx_(build|test)_rules" OR NOT "${target};${libraries}" MATCHES "vxlib4|vx_tools_common"
            OR NOT "${sources}" MATCHES "[.]cpp")
            continue()
        elseif("${libraries}" MATCHES "vx_test_rules")
            set(set vx_precompiled_for_tests)
        elseif(type STREQUAL "EXECUTABLE")
            set(set vx_precompiled_for_programs)
        else()
            set(set vx_precompiled_for_libraries)
        endif()
        target_precompile_headers(${target} REUSE_FROM ${set})
        list(FILTER sources INCLUDE REGEX "[.]c$")
        get_target_property(place ${target} SOURCE_DIR)
        list(TRANSFORM sources PREPEND ${place}/)
        set_source_files_properties(${sources} TARGET_DIRECTORY ${target} PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
    endforeach()
endfunction()
