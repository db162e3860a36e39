# SPDX-License-Identifier: MIT
# What `cmake --install` installs, in four components: `tool`, the reader; `companion`, cttool
# with what belongs to it; `library`, the shared library as
# programs load it; `development`, all that building a program takes.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/CodeTrace)
set(pkg_config_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set_target_properties(codetrace PROPERTIES EXPORT_NAME codetrace_static)
set_target_properties(codetrace_shared PROPERTIES EXPORT_NAME codetrace)
if(TARGET codetrace_exe)
  install(TARGETS codetrace_exe RUNTIME COMPONENT tool)
  install(TARGETS cttool RUNTIME COMPONENT companion)
  # Programs with SQLite load it by its name.
  install(TARGETS codetrace_sqlite
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/codetrace COMPONENT companion)
endif()
install(TARGETS codetrace codetrace_shared EXPORT CodeTraceTargets
  ARCHIVE COMPONENT development
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
)

# codetrace.h, what it includes, and what that includes; each in its folder.
set(headers_to_read codetrace/codetrace.h)
set(public_headers)
while(headers_to_read)
  list(POP_FRONT headers_to_read header)
  if(header IN_LIST public_headers)
    continue()
  endif()
  list(APPEND public_headers ${header})
  set(path ${PROJECT_SOURCE_DIR}/src/libs/${header})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${path}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT development
  )
  file(STRINGS ${path} included REGEX "^#include \".*\"")
  list(TRANSFORM included REPLACE "^#include \"(.*)\".*$" "\\1")
  # A header beside this one may go by its name alone.
  list(TRANSFORM included PREPEND "${folder}/" REGEX "^[^/]*$")
  list(APPEND headers_to_read ${included})
endwhile()

# find_package(CodeTrace)
set(config_build_folder ${CMAKE_CURRENT_BINARY_DIR}/CodeTrace)
configure_package_config_file(cmake/CodeTraceConfig.cmake.in
  ${config_build_folder}/CodeTraceConfig.cmake
  INSTALL_DESTINATION ${config_folder}
  NO_SET_AND_CHECK_MACRO
)
write_basic_package_version_file(${config_build_folder}/CodeTraceConfigVersion.cmake
  COMPATIBILITY SameMajorVersion
)
install(
  FILES
    ${config_build_folder}/CodeTraceConfig.cmake
    ${config_build_folder}/CodeTraceConfigVersion.cmake
  DESTINATION ${config_folder} COMPONENT development
)
install(EXPORT CodeTraceTargets
  NAMESPACE CodeTrace:: DESTINATION ${config_folder} COMPONENT development
)

# pkg-config. The prefix is told from where the file lies.
file(RELATIVE_PATH prefix_from_pkg_config
  ${CMAKE_INSTALL_PREFIX}/${pkg_config_folder} ${CMAKE_INSTALL_PREFIX}
)
string(REGEX REPLACE "/$" "" prefix_from_pkg_config ${prefix_from_pkg_config})
configure_file(cmake/codetrace.pc.in codetrace.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/codetrace.pc
  DESTINATION ${pkg_config_folder} COMPONENT development
)
