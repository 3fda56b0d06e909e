# The manual page of the program, and its completions where the shells look for them.
set(completions ${PROJECT_SOURCE_DIR}/tools/completions)

install(FILES ${PROJECT_BINARY_DIR}/tools/man/sorrelin.1
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
  COMPONENT tool)
install(FILES ${completions}/sorrelin.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  RENAME sorrelin
  COMPONENT tool)
install(FILES ${completions}/sorrelin.fish
  DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
  COMPONENT tool)

# Debian's zsh looks into one folder for packages and into another for what is installed by hand.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(zsh_folder vendor-completions)
else()
  set(zsh_folder site-functions)
endif()
install(FILES ${completions}/_sorrelin
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_folder}
  COMPONENT tool)
