// SPDX-License-Identifier: MIT
//
// The trace that a verb works on, and what is said about it on standard error.
#pragma once

#include <string>

#include "codetrace/ct_trace.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

class Input {
 public:
  // Borrows: the session.
  explicit Input(const Session& session) : session_(session) {}

  // Reads the trace of this name; "-" is standard input. False if it cannot be read, and then it
  // was said why.
  [[nodiscard]] bool open(const std::string& name);
  [[nodiscard]] const Trace& trace() const { return trace_; }

  // What is to be said at the end of a run: that the trace is damaged, if it is.
  void say_damage() const;

 private:
  const Session& session_;
  std::string name_;
  Trace trace_;
};

// Adds the operand that names the trace. Borrows the name.
void add_file(CLI::App& command, std::string& name);

}  // namespace CT::Tool
