# SPDX-License-Identifier: MIT
# Manual pages, and completions where each shell looks for those that come with programs.
include(GNUInstallDirs)

install(FILES man/codetrace.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(FILES man/codetrace.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT tool)

install(FILES completions/codetrace.bash RENAME codetrace COMPONENT tool
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
# Debian's zsh looks there for what packages bring, and here for what the machine's owner installs.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(zsh_folder vendor-completions)
else()
  set(zsh_folder site-functions)
endif()
install(FILES completions/_codetrace COMPONENT tool
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_folder})
install(FILES completions/codetrace.fish COMPONENT tool
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
