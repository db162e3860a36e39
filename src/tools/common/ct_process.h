// SPDX-License-Identifier: MIT
//
// What every tool of the project does around its work: descriptors, signals, the log to standard
// error, and an end with a message when memory runs out.
//
// A tool's main is `return CT::Tool::run_tool(run, argc, argv);` and everything else happens in
// `run`, whose result is the exit status. Memory that runs out anywhere in it, also where nothing
// may be thrown, ends the process with "Out of memory" and a status of the tool's choice; any other
// exception is a mistake of ours and aborts.
#pragma once

#include <string_view>

#include "tools/common/ct_descriptors.h"

namespace CT::Tool {

// A tool's work. `standard` is for its outputs.
using Run = int (*)(int argc, char** argv, StandardDescriptors& standard);

int run_tool(Run run, int argc, char** argv, int no_memory_status = 1);

// Hands on to the log what CT::File tells; a FileLog.
void log_line(int level, std::string_view text, const char* source_file, int line);

}  // namespace CT::Tool
