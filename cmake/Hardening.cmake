# SPDX-License-Identifier: MIT
# Second lines of defence for a program that reads files from strangers, in every optimised build
# without sanitizers (which bring their own, and do not get on with _FORTIFY_SOURCE).
include(CheckPIESupported)
check_pie_supported()

if(NOT CODETRACE_SANITIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -D_GLIBCXX_ASSERTIONS
                      -fstack-protector-strong -fstack-clash-protection)
  add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
