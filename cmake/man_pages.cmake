# Man pages, made of the pages of docs/: nothing of ours has to run for it, so a cross build has them as well.
find_program(LOWDOWN lowdown REQUIRED)
find_program(AWK NAMES awk mawk gawk REQUIRED)

set(man_page_folder ${PROJECT_BINARY_DIR}/share/man/man1)
set(man_page_programs pvrctl pvr-sandbox pvr-simulator pvr-make-stream)
set(man_page_scripts ${CMAKE_CURRENT_LIST_DIR}/man-page.awk ${CMAKE_CURRENT_LIST_DIR}/man-tidy.awk)

# add_man_page(PROGRAM COMPONENT PAGE SYNOPSIS SUMMARY VARIABLE=VALUE...): the variables are those of man-page.awk.
function(add_man_page program component page synopsis summary)
    set(source ${PROJECT_SOURCE_DIR}/docs/${page})
    set(markdown ${PROJECT_BINARY_DIR}/man/${program}.md)
    set(draft ${PROJECT_BINARY_DIR}/man/${program}.roff)
    set(manual ${man_page_folder}/${program}.1)
    set(others ${man_page_programs})
    list(REMOVE_ITEM others ${program})
    list(JOIN others " " others)
    list(TRANSFORM ARGN PREPEND "-v;")
    list(GET man_page_scripts 0 make_page)
    list(GET man_page_scripts 1 tidy)
    add_custom_command(
        OUTPUT ${manual}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man ${man_page_folder}
        COMMAND ${AWK} -v name=${program} -v "synopsis=${synopsis}" -v "summary=${summary}" -v "others=${others}"
            ${ARGN} -f ${make_page} ${source} > ${markdown}
        COMMAND ${LOWDOWN} -s -tman --out-no-smarty --nroff-nolinks -m title=${program} -m section=1
            -m "source=${PROJECT_NAME} ${PROJECT_VERSION}" -o ${draft} ${markdown}
        COMMAND ${AWK} -f ${tidy} ${draft} > ${manual}
        DEPENDS ${source} ${man_page_scripts}
        VERBATIM)
    set_property(GLOBAL APPEND PROPERTY PVR_MAN_PAGES ${manual})
    install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
endfunction()

add_man_page(pvrctl tools pvrctl.md "[OPTION]... COMMAND" "the command line tool of the Recording service"
    "without=Change it")
add_man_page(pvr-sandbox tools sandbox.md "[OPTION]... [-- COMMAND [ARG]...]"
    "run a command with a bus and a Recording service of its own")
add_man_page(pvr-simulator simulator simulator.md "[OPTION]..." "the development Recording service"
    "without=The rooms")
add_man_page(pvr-make-stream simulator simulator.md "[--seconds N] [--bit-rate N] FILE"
    "make a small transport stream to play" "only=Make a recording")

get_property(man_pages GLOBAL PROPERTY PVR_MAN_PAGES)
add_custom_target(pvr-man-pages ALL DEPENDS ${man_pages})
