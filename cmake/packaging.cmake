# SPDX-License-Identifier: Apache-2.0
# The Debian package qorext-tools. The workstation's libraries go by the phone's names, so they lie
# in a folder of their own, where only these programs look.
include(GNUInstallDirs)

set(QOREXT_LIBRARIES lib/qorext)
set(QOREXT_DATA ${CMAKE_INSTALL_DATADIR}/qorext)
set(programs qorext_client qorext_modem qorextctl)
set(libraries cutils qmi_cci qmiqorext qmiservices nativedropbox)

# One path for build and installation: one that is exchanged later is padded with empty entries,
# which a loader takes for the working directory.
get_filename_component(liblog_folder ${QOREXT_LIBLOG} DIRECTORY)
set(own_libraries "$ORIGIN/../lib/qorext;$ORIGIN/../lib")
set_target_properties(${programs} ${libraries} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
set_target_properties(qorext_client PROPERTIES INSTALL_RPATH "${own_libraries};${liblog_folder}")
set_target_properties(qmi_cci PROPERTIES INSTALL_RPATH "${liblog_folder}")
set_target_properties(qorext_modem qorextctl PROPERTIES INSTALL_RPATH "${own_libraries}")

install(TARGETS ${programs} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS ${libraries} LIBRARY DESTINATION ${QOREXT_LIBRARIES})
install(FILES docs/man/qorextctl.1 docs/man/qorext_modem.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/man/qorext_client.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
install(FILES common/completion/qorextctl.bash RENAME qorextctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES common/completion/_qorextctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(DIRECTORY scenarios DESTINATION ${QOREXT_DATA} FILES_MATCHING PATTERN "*.toml")
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}
        FILES_MATCHING PATTERN "*.md" PATTERN man EXCLUDE PATTERN pictures EXCLUDE)
install(FILES LICENSE RENAME copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qorext-tools)
set(CPACK_PACKAGE_CONTACT "qorext maintainers <qorext@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "OEM-hook service of a handset, its tool and a simulated modem")
set(CPACK_PACKAGE_DESCRIPTION
"qorextctl drives qorext_client as a phone's radio interface daemon does: it
sends requests by name, decodes replies, unsolicited messages and logs, and
records and replays sessions. qorext_modem emulates the modem.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
include(CPack)
