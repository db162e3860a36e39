// SPDX-License-Identifier: MIT
//
// How all of these programs begin.
#pragma once

#include <codetrace/codetrace.h>
#include <fmt/core.h>

#include <cstdlib>
#include <string>

// Says what is odd about a trace. It ends nothing: what is whole is read.
class Complaints final : public CT::FindingSink {
  void report(const CT::Finding& finding) override {
    CT::MemoryWriter line;
    CT::write_text(finding, line);
    fmt::print(stderr, "{}\n", line.view());
  }
};

// The trace, read whole. If the file is no trace, the program ends with a message.
inline CT::Trace open_trace(const char* path) {
  CT::Trace trace;
  Complaints complaints;
  if (trace.open(path, &complaints)) return trace;
  fmt::print(stderr, "{}: {}\n", path, trace.error_message());
  std::exit(1);
}

inline int usage(const char* words) {
  fmt::print(stderr, "Usage: {}\n", words);
  return 1;
}

// "Class::name", or the name alone.
inline std::string name_of(const CT::Checkpoint::Function& function) {
  return function.full_name().toStdString();
}
