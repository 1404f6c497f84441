# One of the two libraries. Sets what both need: names, version, exported symbols, the check that headers compile alone.
function(vx_add_library name)
    add_library(${name})
    add_library(vxlib4::${name} ALIAS ${name})
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:vx_build_rules>)
    # Not for tests, which use locks in ways that the analysis cannot follow.
    target_compile_options(${name} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wthread-safety>)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/vxlib4>)
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_compile_options(${name} PRIVATE -Woverloaded-virtual) # tests override what they need and no more
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        INSTALL_RPATH "$ORIGIN"
        VERIFY_INTERFACE_HEADER_SETS ON)
    if(BUILD_SHARED_LIBS)
        set(script ${CMAKE_CURRENT_SOURCE_DIR}/${name}.map)
        # Calls inside the library are bound to its own functions, not through a table that another library could fill.
        target_compile_options(${name} PRIVATE -fno-semantic-interposition -fno-plt)
        target_link_options(${name} PRIVATE -Wl,--version-script=${script} -Wl,-Bsymbolic-functions)
        if(NOT VX_SANITIZE) # the sanitizers' symbols come from the program
            target_link_options(${name} PRIVATE -Wl,-z,defs)
        endif()
        set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${script})
    endif()
endfunction()

# Adds to a library from the folder that calls: vx_sources(vxlib4 HEADERS public.h... SOURCES source.cpp private.h...)
function(vx_sources target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;SOURCES")
    if(arg_SOURCES)
        target_sources(${target} PRIVATE ${arg_SOURCES})
    endif()
    if(arg_HEADERS)
        target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
    endif()
endfunction()

# A program that is installed with the library: vx_add_tool(name SOURCES main.cpp...)
function(vx_add_tool name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE vx_build_rules vx_tools_common)
    file(RELATIVE_PATH libraries /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
    set_target_properties(${name} PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
    install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()

# A test program: vx_add_test(name [LABELS label...] SOURCES test.cpp...). With the label "threads" it also
# runs under ThreadSanitizer. So it does with "scalar", for code that scans text in blocks: that build has no vector
# instructions. With "narrow" it also runs in a build without AVX-512. PLATFORM_ONLY links only the platform layer. Programs with NAMED_OBJECTS do not run at the same time,
# because they count the objects that processes share by name.
function(vx_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "PLATFORM_ONLY;NAMED_OBJECTS" "" "LABELS;SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE vx_test_rules $<IF:$<BOOL:${arg_PLATFORM_ONLY}>,vxsys4,vxlib4> ${arg_LIBRARIES})
    set(properties TIMEOUT 300 ENVIRONMENT VXSYS4_MACHINE_REGISTRY=) # not what is installed on this machine
    if(arg_LABELS) # an empty value would be lost on the way, and the next property's name taken for it
        list(JOIN arg_LABELS + labels) # one text for `ctest -L`: a list would lose all but the first on the way
        list(APPEND properties LABELS "${labels}")
    endif()
    if("narrow" IN_LIST arg_LABELS)
        add_dependencies(vx_narrow_tests ${name})
    endif()
    if(arg_NAMED_OBJECTS)
        list(APPEND properties RESOURCE_LOCK named_objects)
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES ${properties})
endfunction()

# Installs both libraries, their headers, a CMake package and files for pkg-config.
function(vx_install)
    include(CMakePackageConfigHelpers)
    set(package ${CMAKE_INSTALL_LIBDIR}/cmake/vxlib4)
    set(headers ${CMAKE_INSTALL_INCLUDEDIR}/vxlib4)
    # The folder of the libraries can be more than one level below the prefix.
    file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
    foreach(name IN ITEMS vxsys4 vxlib4) # each with targets of its own: an installation may have the platform layer alone
        install(TARGETS ${name} EXPORT ${name}Targets
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
            FILE_SET HEADERS DESTINATION ${headers})
        install(EXPORT ${name}Targets NAMESPACE vxlib4:: DESTINATION ${package})
        configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
        install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    endforeach()
    configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vxlib4Config.cmake.in
        ${PROJECT_BINARY_DIR}/vxlib4Config.cmake INSTALL_DESTINATION ${package})
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/vxlib4ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/vxlib4Config.cmake ${PROJECT_BINARY_DIR}/vxlib4ConfigVersion.cmake
        DESTINATION ${package})
    install(FILES ${PROJECT_SOURCE_DIR}/cmake/VxComponent.cmake ${PROJECT_SOURCE_DIR}/cmake/VxComponent.map
        DESTINATION ${package})
    # In folders as in the sources, because the pages link each other.
    foreach(page IN ITEMS CHANGELOG.md LICENSE README.md SECURITY.md)
        install(FILES ${PROJECT_SOURCE_DIR}/${page} DESTINATION ${CMAKE_INSTALL_DOCDIR})
    endforeach()
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
        FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "*.svg" PATTERN site EXCLUDE PATTERN man EXCLUDE)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
endfunction()
