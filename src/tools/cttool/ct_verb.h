// SPDX-License-Identifier: MIT
//
// A verb of cttool: the question that it answers, its options, and what it does. The table of them
// is the one place where they are listed.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "tools/common/ct_descriptors.h"

// Of CLI11, which costs seconds to compile: only those that define options include it.
namespace CLI {
class App;
}

namespace CT::Tool {

// Exit statuses of every verb.
enum Status : int {
  done = 0,
  nothing_found = 1,  // or defects, or differences
  failed = 2,         // usage, unreadable input, lost output
};

enum class Color { automatic, always, never };

// What every verb is given: the options of all verbs.
struct Session {
  static constexpr std::uint64_t usual_max_size = std::uint64_t{1} << 30;

  StandardDescriptors& standard;
  bool lists_findings = false;  // each oddity of a trace is said, not only how many there are
  Color color = Color::automatic;
  bool pages = true;                        // a pager shows what is printed on a terminal
  bool full = false;                        // nothing is cut to the terminal's width
  std::uint64_t max_size = usual_max_size;  // bytes that a trace in an archive may have
};

// Runs a verb after its options were read; returns the exit status.
using VerbRun = std::function<int(Session&)>;

struct Verb {
  const char* name;
  const char* question;  // one line
  const char* examples;  // lines that work as they stand
  // Adds options to the verb's command.
  VerbRun (*define)(CLI::App& command);
};

// In the order of the help.
std::span<const Verb> verbs();

VerbRun define_calls(CLI::App& command);
VerbRun define_check(CLI::App& command);
VerbRun define_export(CLI::App& command);
VerbRun define_redact(CLI::App& command);
VerbRun define_report(CLI::App& command);
VerbRun define_response(CLI::App& command);
VerbRun define_salvage(CLI::App& command);
VerbRun define_show(CLI::App& command);
VerbRun define_sql(CLI::App& command);
VerbRun define_summary(CLI::App& command);
VerbRun define_top(CLI::App& command);
VerbRun define_tree(CLI::App& command);

}  // namespace CT::Tool
