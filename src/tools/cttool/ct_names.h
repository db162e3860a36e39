// SPDX-License-Identifier: MIT
//
// Which functions of a trace the user means: each is asked once, however often it is called.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT::Tool {

// The functions whose names match one of the patterns (see ct_name_pattern.h); no patterns mean
// all.
class NamedFunctions {
 public:
  // False, after it was said why, if a pattern is none.
  [[nodiscard]] bool find(const Trace& trace, const std::vector<std::string>& patterns);

  // By the function's place in the trace's list; false for -1.
  [[nodiscard]] bool has(std::int32_t function) const {
    return function >= 0 && named_[static_cast<std::size_t>(function)];
  }
  // Whether no name matches.
  [[nodiscard]] bool is_empty() const {
    return std::find(named_.begin(), named_.end(), true) == named_.end();
  }

 private:
  std::vector<bool> named_;
};

// The nodes that the user looks at, in order and apart from each other.
class Scope {
 public:
  struct Range {
    NodeId first;
    NodeId last;  // included
  };

  // What lies under the node of this id, or under the outermost calls whose names match; each of
  // them included. An empty text means everything. False, after it was said why, if there is no
  // such node or no such call, or if the pattern is none.
  [[nodiscard]] bool find(const Trace& trace, const Measures& measures, const std::string& under);

  [[nodiscard]] const std::vector<Range>& ranges() const { return ranges_; }

 private:
  std::vector<Range> ranges_;
};

// Says that the trace has no function of such a name, and which name is near.
void say_none(const Trace& trace, const std::string& name);

// The number of a node, as the user wrote it, with "#" before it or without; Storage::no_node,
// after it was said why, if the trace has none of that number.
NodeId find_node(const Trace& trace, const std::string& id);

}  // namespace CT::Tool
