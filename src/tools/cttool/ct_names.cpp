// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_names.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "ctmeasure/ct_grouping.h"
#include "tools/common/ct_name_pattern.h"
#include "tools/cttool/ct_nearest.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

// Of a node: "12", or "#12" as others print it. Empty for what is no number.
std::string number_of(const std::string& text) {
  const std::string number = text.starts_with('#') ? text.substr(1) : text;
  return number.find_first_not_of("0123456789") == std::string::npos ? number : "";
}

// The names of functions that are called nearly so, in words behind a sentence.
std::string guess_of(const Trace& trace, const std::string& name) {
  std::vector<std::string> known;
  for (const Checkpoint::Function& function : trace.functions()) {
    known.push_back(name_of(function));
  }
  return shown_text(guess(name, known));
}

}  // namespace

bool NamedFunctions::find(const Trace& trace, const std::vector<std::string>& patterns) {
  std::vector<NamePattern> wanted;
  for (const std::string& pattern : patterns) {
    wanted.emplace_back(pattern);
    // No name of a function has a slash.
    const bool has_no_end = pattern.starts_with('/') && !Expression::is_one(pattern);
    if (wanted.back().is_valid() && !has_no_end) continue;
    std::fprintf(stderr, "%s is no regular expression: %s\n", pattern.c_str(),
                 has_no_end ? "it has no / at its end" : wanted.back().error().c_str());
    return false;
  }
  named_.clear();
  for (const Checkpoint::Function& function : trace.functions()) {
    const std::string name = name_of(function);
    named_.push_back(wanted.empty() ||
                     std::any_of(wanted.begin(), wanted.end(), [&](const NamePattern& pattern) {
                       return pattern.matches(name);
                     }));
  }
  return true;
}

NodeId find_node(const Trace& trace, const std::string& id) {
  NodeId found = Storage::no_node;
  const std::string number = number_of(id);
  if (number.empty()) {
    std::fprintf(stderr, "%s is no number of a node\n", id.c_str());
    return Storage::no_node;
  }
  const auto read = std::from_chars(number.data(), number.data() + number.size(), found);
  if (read.ec == std::errc() && found < trace.node_count()) return found;
  if (trace.node_count() == 0) {
    std::fputs("the trace has no nodes\n", stderr);
  } else {
    std::fprintf(stderr, "there is no node %s; they go from 0 to %d\n", id.c_str(),
                 trace.node_count() - 1);
  }
  return Storage::no_node;
}

void say_none(const Trace& trace, const std::string& name) {
  std::fprintf(stderr, "nothing called %s%s\n", shown_text(name).c_str(),
               guess_of(trace, name).c_str());
}

bool Scope::find(const Trace& trace, const Measures& measures, const std::string& under) {
  ranges_.clear();
  if (under.empty()) {
    if (trace.node_count() != 0) ranges_.push_back({0, trace.node_count() - 1});
    return true;
  }
  if (!number_of(under).empty()) {
    const NodeId id = find_node(trace, under);
    if (id == Storage::no_node) return false;
    ranges_.push_back({id, trace.last(id)});
    return true;
  }
  NamedFunctions named;
  if (!named.find(trace, {under})) return false;
  for (NodeId id = 0; id < trace.node_count(); ++id) {
    if (!named.has(measures[id].function)) continue;
    ranges_.push_back({id, trace.last(id)});
    id = trace.last(id);
  }
  if (ranges_.empty()) say_none(trace, under);
  return !ranges_.empty();
}

}  // namespace CT::Tool
