# SPDX-License-Identifier: MIT
# The same packages for systems with rpm; what they need is found in their files.
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_MAIN_COMPONENT tool)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE MIT)
set(CPACK_RPM_PACKAGE_RELEASE 1)
set(CPACK_RPM_COMPRESSION_TYPE xz)
# Folders that belong to the system.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
  /usr/lib64/cmake
  /usr/lib64/pkgconfig
  /usr/share/bash-completion
  /usr/share/bash-completion/completions
  /usr/share/fish
  /usr/share/fish/vendor_completions.d
  /usr/share/licenses
  /usr/share/man
  /usr/share/man/man1
  /usr/share/man/man5
  /usr/share/zsh
  /usr/share/zsh/site-functions
  /usr/share/zsh/vendor-completions
)
# The same bytes on every machine.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _buildhost reproducible
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _build_id_links none")

set(CPACK_RPM_TOOL_PACKAGE_NAME codetrace)
set(CPACK_RPM_COMPANION_PACKAGE_NAME codetrace-tools)
set(CPACK_RPM_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_RPM_DEVELOPMENT_PACKAGE_NAME libcodetrace-devel)
set(CPACK_RPM_DEVELOPMENT_PACKAGE_REQUIRES
  "${library_package} = ${PROJECT_VERSION}, cmake(Qt6Core) >= 6.4")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(CPACK_RPM_${upper}_PACKAGE_SUMMARY "${${component}_summary}")
  set(CPACK_RPM_${upper}_PACKAGE_DESCRIPTION "${${component}_text}")
  install(FILES LICENSE
    DESTINATION share/licenses/${CPACK_RPM_${upper}_PACKAGE_NAME} COMPONENT ${component})
endforeach()
install_development_documents(${CPACK_RPM_DEVELOPMENT_PACKAGE_NAME})
