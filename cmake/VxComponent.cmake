# A component library: vx_add_component(name SOURCES source.cpp... [PROGIDS progid...])
#
# One of the sources has VX_COMPONENT_LIBRARY (vx/vorb/Component.h). The library exports its functions and nothing else, so
# that no symbol keeps it loaded. With PROGIDS, ctest runs "vxreg verify", registers the library in the folder "registry" of
# the build, and creates an object by each of these names. A test that needs the registered library has the property
# FIXTURES_REQUIRED <name> and the variable VXSYS4_REGISTRY in its environment.
function(vx_add_component name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;PROGIDS")
    set(script ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/VxComponent.map)
    add_library(${name} MODULE ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE vxlib4::vxlib4)
    target_compile_options(${name} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
    target_link_options(${name} PRIVATE -Wl,--version-script=${script})
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        LINK_DEPENDS ${script})
    if(NOT arg_PROGIDS)
        return()
    endif()

    if(TARGET vxreg)
        set(vxreg $<TARGET_FILE:vxreg>)
    else() # installed with this file
        set(root ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../../..)
        find_program(VXREG_PROGRAM vxreg HINTS ${root}/bin ${root}/../bin REQUIRED)
        set(vxreg ${VXREG_PROGRAM})
    endif()
    set(tests ${name}.verify ${name}.register ${name}.unregister)
    add_test(NAME ${name}.verify COMMAND ${vxreg} verify $<TARGET_FILE:${name}>)
    add_test(NAME ${name}.register COMMAND ${vxreg} register $<TARGET_FILE:${name}>)
    add_test(NAME ${name}.unregister COMMAND ${vxreg} unregister $<TARGET_FILE:${name}>)
    set_property(TEST ${name}.register PROPERTY FIXTURES_SETUP ${name})
    set_property(TEST ${name}.unregister PROPERTY FIXTURES_CLEANUP ${name})
    foreach(progid IN LISTS arg_PROGIDS)
        add_test(NAME ${name}.resolve.${progid} COMMAND ${vxreg} resolve ${progid})
        set_property(TEST ${name}.resolve.${progid} PROPERTY FIXTURES_REQUIRED ${name})
        list(APPEND tests ${name}.resolve.${progid})
    endforeach()
    set_property(TEST ${tests} PROPERTY
        ENVIRONMENT VXSYS4_REGISTRY=${CMAKE_CURRENT_BINARY_DIR}/registry VXSYS4_MACHINE_REGISTRY=)
endfunction()
