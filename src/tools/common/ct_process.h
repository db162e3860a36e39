// SPDX-License-Identifier: MIT
//
// What every tool of the project does around its work: descriptors, signals, the log to standard
// error, and an end with a message when memory runs out.
//
// A tool's main is `return CT::Tool::run_tool(run, argc, argv);` and everything else happens in
// `run`, whose result is the exit status. A std::bad_alloc that leaves it ends the process with
// "Out of memory" and status 1; any other exception is a mistake of ours and aborts.
#pragma once

namespace CT::Tool {

int run_tool(int (*run)(int argc, char** argv), int argc, char** argv);

}  // namespace CT::Tool
