# SPDX-License-Identifier: MIT
# Run by cpack when the files of all packages lie in its folder: compresses manual pages as
# packages have them and large pages as Debian wants them, and gives every file the time of the last
# change to the sources.
set(staged ${CPACK_TEMPORARY_DIRECTORY})
file(GLOB_RECURSE pages ${staged}/*/usr/share/man/*.[1-9])
if(CPACK_GENERATOR STREQUAL "DEB")
  file(GLOB_RECURSE documents ${staged}/*/usr/share/doc/*.md)
  foreach(document IN LISTS documents)
    file(SIZE ${document} size)
    if(size GREATER 4096)
      list(APPEND pages ${document})
    endif()
  endforeach()
endif()
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9nf ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND find ${staged} -exec touch -h -d @$ENV{SOURCE_DATE_EPOCH} {} +
    COMMAND_ERROR_IS_FATAL ANY)
endif()
