// SPDX-License-Identifier: MIT
//
// The library's version, for programs that are to compile with several. It stands nowhere else: the
// build reads the three numbers here.
#pragma once

#define CODETRACE_VERSION_MAJOR 3
#define CODETRACE_VERSION_MINOR 0
#define CODETRACE_VERSION_PATCH 0

// The same as text: "3.0.0".
#define CODETRACE_VERSION_STRING \
  CODETRACE_DOTTED(CODETRACE_VERSION_MAJOR, CODETRACE_VERSION_MINOR, CODETRACE_VERSION_PATCH)

#define CODETRACE_DOTTED(major, minor, patch) CODETRACE_DOTTED_TEXT(major, minor, patch)
#define CODETRACE_DOTTED_TEXT(major, minor, patch) #major "." #minor "." #patch
