# Where things go that are installed. Everything is found relative to the programs, so that a prefix can be moved.
include(GNUInstallDirs)

# Programs that only the unit starts.
set(ZORVIC_HELPER_DIRECTORY ${CMAKE_INSTALL_LIBEXECDIR}/zorvic)

# Programs of a prefix of their own find the library beside them; what a distribution installs sets CMAKE_SKIP_INSTALL_RPATH.
file(RELATIVE_PATH FROM_PROGRAMS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(CMAKE_INSTALL_RPATH $ORIGIN/${FROM_PROGRAMS})

# zorvic_install_manual(PROGRAM COMPONENT COMMANDS...): a manual page that the program's own help is made into. COMMANDS
# are those that its help does not list.
function(zorvic_install_manual PROGRAM COMPONENT)
    set(PAGE ${CMAKE_CURRENT_BINARY_DIR}/${PROGRAM}.1)
    set(MORE ${PROJECT_SOURCE_DIR}/packaging/man/${PROGRAM}.more)
    set(MAKER ${PROJECT_SOURCE_DIR}/packaging/man/make-page)
    add_custom_command(OUTPUT ${PAGE}
        COMMAND ${MAKER} $<TARGET_FILE:${PROGRAM}> ${PROJECT_VERSION} ${MORE} ${ARGN} > ${PAGE}
        DEPENDS ${PROGRAM} ${MORE} ${MAKER}
        VERBATIM)
    add_custom_target(${PROGRAM}-manual ALL DEPENDS ${PAGE})
    install(FILES ${PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${COMPONENT})
endfunction()
