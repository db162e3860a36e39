# SPDX-License-Identifier: MIT
# The schemas of the JSON documents, for programs that read them, and the rules of cttool redact, for people.
include(GNUInstallDirs)
file(GLOB companion_schemas CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/share/cttool-*.schema.json")
install(FILES ${companion_schemas}
        DESTINATION "${CMAKE_INSTALL_DATADIR}/codetrace" COMPONENT companion)
install(FILES "${PROJECT_SOURCE_DIR}/share/redact.rules"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/codetrace" COMPONENT companion)
install(FILES "${PROJECT_SOURCE_DIR}/share/codetrace.schema.json"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/codetrace" COMPONENT tool)
