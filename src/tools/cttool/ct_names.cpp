// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_names.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "ctmeasure/ct_grouping.h"
#include "tools/common/ct_name_pattern.h"

namespace CT::Tool {

namespace {

bool is_number(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

bool NamedFunctions::find(const Trace& trace, const std::vector<std::string>& patterns) {
  std::vector<NamePattern> wanted;
  for (const std::string& pattern : patterns) {
    wanted.emplace_back(pattern);
    if (wanted.back().is_valid()) continue;
    std::fprintf(stderr, "%s is no regular expression: %s\n", pattern.c_str(),
                 wanted.back().error().c_str());
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
  const auto read = std::from_chars(id.data(), id.data() + id.size(), found);
  if (is_number(id) && read.ec == std::errc() && found < trace.node_count()) return found;
  if (trace.node_count() == 0) {
    std::fputs("the trace has no nodes\n", stderr);
  } else {
    std::fprintf(stderr, "there is no node %s; they go from 0 to %d\n", id.c_str(),
                 trace.node_count() - 1);
  }
  return Storage::no_node;
}

bool Scope::find(const Trace& trace, const Measures& measures, const std::string& under) {
  ranges_.clear();
  if (under.empty()) {
    if (trace.node_count() != 0) ranges_.push_back({0, trace.node_count() - 1});
    return true;
  }
  if (is_number(under)) {
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
  if (ranges_.empty()) std::fprintf(stderr, "nothing called %s\n", under.c_str());
  return !ranges_.empty();
}

}  // namespace CT::Tool
