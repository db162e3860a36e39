# SPDX-License-Identifier: MIT
# The schema of the JSON document, for programs that read it.
include(GNUInstallDirs)
install(FILES "${PROJECT_SOURCE_DIR}/share/codetrace.schema.json"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/codetrace" COMPONENT tool)
