# The manual page and the completions of a program, from what it prints itself, so that they always match its options.
include(GNUInstallDirs)

find_program(VX_HELP2MAN help2man)
if(NOT VX_HELP2MAN)
    message(STATUS "The manual pages of the programs are not made: help2man was not found")
endif()

# vx_add_tool_files(name section)
function(vx_add_tool_files name section)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/files)
    file(MAKE_DIRECTORY ${folder})
    set(files)
    foreach(row IN ITEMS
            "bash|${name}|bash-completion/completions" "zsh|_${name}|zsh/vendor-completions"
            "fish|${name}.fish|fish/vendor_completions.d")
        string(REPLACE "|" ";" row "${row}")
        list(GET row 0 shell)
        list(GET row 1 file)
        list(GET row 2 place)
        set(file ${folder}/${shell}/${file})
        file(MAKE_DIRECTORY ${folder}/${shell})
        add_custom_command(OUTPUT ${file}
            COMMAND ${name} --completion=${shell} > ${file} DEPENDS ${name} VERBATIM)
        install(FILES ${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/${place})
        list(APPEND files ${file})
    endforeach()
    if(VX_HELP2MAN)
        set(page ${folder}/${name}.${section})
        set(rest ${folder}/${name}.h2m)
        configure_file(${PROJECT_SOURCE_DIR}/docs/man/${name}.h2m ${rest} @ONLY)
        set(layout ${PROJECT_SOURCE_DIR}/docs/man/layout.h2m) # no word is cut, because many are names that a reader copies
        add_custom_command(OUTPUT ${page}
            COMMAND ${VX_HELP2MAN} --no-info --section=${section} --include=${rest} --include=${layout} --output=${page}
                $<TARGET_FILE:${name}>
            DEPENDS ${name} ${rest} ${layout} VERBATIM)
        install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
        list(APPEND files ${page})
    endif()
    add_custom_target(${name}_files ALL DEPENDS ${files})
endfunction()
