# SPDX-License-Identifier: MIT
# What `cmake --install` installs, in three components: `tool`; `library`, the shared library as
# programs load it; `development`, all that building a program takes.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/CodeTrace)
set(pkg_config_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set_target_properties(codetrace PROPERTIES EXPORT_NAME codetrace_static)
set_target_properties(codetrace_shared PROPERTIES EXPORT_NAME codetrace)
if(TARGET codetrace_exe)
  install(TARGETS codetrace_exe RUNTIME COMPONENT tool)
endif()
install(TARGETS codetrace codetrace_shared EXPORT CodeTraceTargets
  ARCHIVE COMPONENT development
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
)

# codetrace.h, what it includes, and what that includes; each in its folder.
foreach(header
    codetrace/bytes/ct_cursor codetrace/bytes/ct_plain_array codetrace/codetrace codetrace/ct_file
    codetrace/ct_storage codetrace/ct_trace codetrace/ct_version codetrace/model/ct_checkpoint
    codetrace/model/ct_entity codetrace/model/ct_format codetrace/model/ct_leaf
    codetrace/model/ct_place_index
    codetrace/model/ct_records codetrace/model/ct_string codetrace/model/ct_types
    codetrace/model/ct_value codetrace/model/ct_value_ref codetrace/model/ct_value_tape
    codetrace/model/ct_view codetrace/render/ct_document codetrace/render/ct_file_dump
    codetrace/render/ct_node_text codetrace/render/ct_rendered codetrace/render/ct_value_text
    codetrace/render/ct_writer codetrace/tree/ct_diagnostics codetrace/tree/ct_fields
    codetrace/tree/ct_node kcommon/k_export kcommon/k_timestamp)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES src/libs/${header}.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT development
  )
endforeach()

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
