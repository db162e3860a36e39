# SPDX-License-Identifier: MIT
# What `cmake --install` installs, in three components: `tool`; `library`, the shared library as
# programs load it; `development`, all that building a program takes.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(headers_folder ${CMAKE_INSTALL_INCLUDEDIR}/codetrace)
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/CodeTrace)
set(pkg_config_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set_target_properties(codetrace PROPERTIES EXPORT_NAME codetrace_static)
set_target_properties(codetrace_shared PROPERTIES EXPORT_NAME codetrace)
install(TARGETS codetrace_exe RUNTIME COMPONENT tool)
install(TARGETS codetrace codetrace_shared EXPORT CodeTraceTargets
  ARCHIVE COMPONENT development
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
)

# codetrace.h, what it includes, and what that includes.
foreach(name
    codetrace ct_checkpoint ct_cursor ct_document ct_entity ct_file ct_file_dump ct_json
    ct_json_members ct_name_hash ct_node ct_place_index ct_records ct_storage ct_string ct_value
    ct_value_json ct_value_key ct_value_tape ct_value_text ct_view ct_walk ct_writer)
  list(APPEND public_headers src/libs/codetrace/${name}.h)
endforeach()
install(FILES ${public_headers} DESTINATION ${headers_folder} COMPONENT development)
install(
  FILES
    src/libs/kcommon/k_export.h
    src/libs/kcommon/k_logger.h
    src/libs/kcommon/k_timestamp.h
  DESTINATION ${headers_folder}/kcommon COMPONENT development
)

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
