// SPDX-License-Identifier: MIT
//
// The trace that a verb works on, and what is said about it on standard error.
#pragma once

#include <string>

#include "codetrace/ct_trace.h"
#include "tools/cttool/ct_byte_input.h"
#include "tools/cttool/ct_decompress.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

class Input {
 public:
  // Borrows: the session.
  explicit Input(const Session& session) : session_(session) {}

  // Reads the trace of this name; "-" is standard input. It may be a pipe, and it may be an archive
  // of gzip, xz or zstd, which its content tells. False if it cannot be read, and then it was said
  // why.
  [[nodiscard]] bool open(const std::string& name);
  [[nodiscard]] const Trace& trace() const { return trace_; }

  // What is to be said at the end of a run: that the trace is damaged, if it is.
  void say_damage() const;

 private:
  bool open(File& file);
  bool unpack(File& file, ByteInput& bytes, Archive kind);
  void read(File file);

  const Session& session_;
  std::string name_;
  std::string failure_;         // why it could not be opened
  std::string archive_damage_;  // what is wrong with the archive of a trace that is whole
  Trace trace_;
};

// Adds the operand that names the trace. Borrows the name.
void add_file(CLI::App& command, std::string& name);

}  // namespace CT::Tool
