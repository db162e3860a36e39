# SPDX-License-Identifier: MIT
# Debian's view of the four packages.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(full_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME codetrace)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_MULTIARCH foreign)

set(CPACK_DEBIAN_COMPANION_PACKAGE_NAME codetrace-tools)
set(CPACK_DEBIAN_COMPANION_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_COMPANION_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPANION_PACKAGE_RECOMMENDS "codetrace, less")
set(CPACK_DEBIAN_COMPANION_PACKAGE_MULTIARCH foreign)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_MULTIARCH same)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libcodetrace-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${library_package} (= ${full_version}), qt6-base-dev (>= 6.4)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_MULTIARCH same)

# What Debian wants in the documentation folder of every package.
find_program(GZIP gzip REQUIRED)
set(debian ${CMAKE_CURRENT_LIST_DIR}/debian)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${debian}/changelog)
execute_process(COMMAND ${GZIP} -9nc ${debian}/changelog
  OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.Debian.gz COMMAND_ERROR_IS_FATAL ANY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${${component}_summary}\n${${component}_text}")
  install(FILES ${debian}/copyright ${PROJECT_BINARY_DIR}/changelog.Debian.gz
    DESTINATION share/doc/${package} COMPONENT ${component})
  install(FILES ${debian}/${package}.lintian-overrides
    DESTINATION share/lintian/overrides RENAME ${package} COMPONENT ${component})
endforeach()
install_development_documents(${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME})
