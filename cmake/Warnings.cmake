# SPDX-License-Identifier: MIT
# Warnings for our own code; errors in the developer and CI presets.
option(CODETRACE_WERROR "Treat warnings as errors" OFF)

add_library(codetrace_warnings INTERFACE)
target_compile_options(codetrace_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-align -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough
  # A type that a switch forgets would be left out of an output.
  -Werror=switch)
if(CODETRACE_WERROR)
  target_compile_options(codetrace_warnings INTERFACE -Werror)
endif()
