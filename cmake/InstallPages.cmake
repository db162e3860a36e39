# SPDX-License-Identifier: MIT
# Manual pages, completions where each shell looks for those that come with programs, and what a user
# reads and tries first, laid out as here so that links and commands go on working.
include(GNUInstallDirs)

install(FILES man/codetrace.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(FILES man/cttool.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT companion)
install(FILES man/codetrace.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT tool)

install(FILES completions/codetrace.bash RENAME codetrace COMPONENT tool
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/cttool.bash RENAME cttool COMPONENT companion
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
# Debian's zsh looks there for what packages bring, and here for what the machine's owner installs.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(zsh_folder vendor-completions)
else()
  set(zsh_folder site-functions)
endif()
install(FILES completions/_codetrace COMPONENT tool
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_folder})
install(FILES completions/_cttool COMPONENT companion
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_folder})
install(FILES completions/codetrace.fish COMPONENT tool
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
install(FILES completions/cttool.fish COMPONENT companion
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

install(FILES README.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool)
install(FILES docs/cookbook.md docs/damaged-files.md docs/exports.md docs/outputs.md
              docs/robustness.md docs/tools.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT tool)
install(FILES examples/notes.ct examples/words.ct
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT tool)
