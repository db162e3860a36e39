// SPDX-License-Identifier: MIT
//
// Nodes of any kind in one line: a call with its arguments, an error with its message, a header, a
// write with the beginning of what was written.
#pragma once

#include <cstdint>
#include <string>

#include "tools/cttool/ct_call_line.h"

namespace CT::Tool {

enum class ValueForm : std::uint8_t {
  none,   // what the node is called
  brief,  // 60 columns of its values; of what was thrown 120
  full,   // all of them, and what a call returned
};

class BriefLines {
 public:
  // Borrows both.
  BriefLines(const Trace& trace, const Measures& measures, ValueForm form)
      : trace_(trace), lines_(trace, measures), form_(form) {}

  // For people: no control character is in it.
  [[nodiscard]] std::string line(NodeId id);
  // What nodes of one fold have in common.
  [[nodiscard]] std::string label(NodeId id) { return lines_.label(id); }

 private:
  [[nodiscard]] std::string of_call(NodeId id, const Node::Base& node,
                                    const Checkpoint::FunctionCall& call);
  [[nodiscard]] std::string of_other(NodeId id, const Node::Base& node);
  [[nodiscard]] std::string result_of(const Node::Base& node);
  [[nodiscard]] std::string shown(std::string_view text, std::size_t columns) const;
  [[nodiscard]] std::string quoted(const Checkpoint::String& text) const;

  const Trace& trace_;
  NodeLines lines_;
  ValueForm form_;
  Checkpoint::ValueTextWriter writer_;
  MemoryWriter text_;
};

}  // namespace CT::Tool
