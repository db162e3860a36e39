// SPDX-License-Identifier: MIT
//
// SQLite's interface. The sources of this folder are compiled twice: for programs that link SQLite,
// and for the loadable extension (CODETRACE_SQLITE_EXTENSION), which gets every function from the
// program that loads it.
#pragma once

#ifdef CODETRACE_SQLITE_EXTENSION
#include <sqlite3ext.h>
extern "C" {
SQLITE_EXTENSION_INIT3
}
#else
#include <sqlite3.h>
#endif
