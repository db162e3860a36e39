# SPDX-License-Identifier: MIT
# What the packages are called, say and need. CODETRACE_PACKAGES is the kind of packages that this
# build folder makes; packaging/build.sh makes both kinds.
set(CODETRACE_PACKAGES "" CACHE STRING "Make packages of this kind with cpack: DEB or RPM")
if(NOT CODETRACE_PACKAGES)
  return()
endif()

set(CPACK_GENERATOR ${CODETRACE_PACKAGES})
set(CPACK_PACKAGE_NAME codetrace)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Code Trace authors")
set(CPACK_PACKAGE_CONTACT "The Code Trace authors <maintainers@codetrace.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/prepare.cmake)

set(CPACK_COMPONENTS_ALL tool companion library development)
set(library_package libcodetrace${PROJECT_VERSION_MAJOR})
set(about "A Code Trace file is the binary dump that a tracing extension inside PHP writes
for one request: calls with arguments and results, includes, output, headers,
errors and exceptions, with times and memory.")
set(tool_summary "reader of PHP request traces")
set(tool_text "${about}
This tool prints such a file as an indented tree, as JSON, checkpoint by
checkpoint or as hex.")
# A package of its own: it takes SQLite and four compressors, which the reader does not need.
set(companion_summary "questions to PHP request traces")
set(companion_text "${about}
This tool answers questions about such a file: where the time went, which
calls match, what the client got, what went wrong; in SQL too, for which there
is an extension for other programs that use SQLite.")
set(library_summary "library that reads PHP request traces")
set(library_text "${about}
This is the library for programs that read such files.")
set(development_summary "library that reads PHP request traces (development files)")
set(development_text "${about}
These are the headers, the static library and the files for CMake and
pkg-config.")

# install_development_documents(PACKAGE): what somebody who uses the library reads first.
function(install_development_documents package)
  install(FILES docs/library.md
    DESTINATION share/doc/${package}/docs COMPONENT development)
  install(DIRECTORY examples/api
    DESTINATION share/doc/${package}/examples COMPONENT development
    FILES_MATCHING PATTERN *.cpp PATTERN *.h)
endfunction()

include(${CMAKE_CURRENT_LIST_DIR}/${CODETRACE_PACKAGES}.cmake)
include(CPack)
