// SPDX-License-Identifier: MIT
//
// Nodes in one line, for people: what they are called, with what and with which result.
#pragma once

#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_value_text.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_node_words.h"

namespace CT::Tool {

class NodeLines {
 public:
  // Borrows both.
  NodeLines(const Trace& trace, const Measures& measures) : trace_(trace), measures_(measures) {}

  // What nodes of one kind have in common: the name of a function, "request", "include FILE" and so
  // on.
  [[nodiscard]] std::string label(NodeId id);
  // A call with its arguments and what came of it; of other nodes the label.
  [[nodiscard]] std::string line(NodeId id);
  // From where a node was made, as "file:line", without a line that is not known; empty if neither
  // is.
  [[nodiscard]] std::string place(NodeId id) const;
  // The nodes from the request down to this one, itself not included.
  [[nodiscard]] std::vector<NodeId> way_to(NodeId id) const;

 private:
  const Trace& trace_;
  const Measures& measures_;
  Checkpoint::ValueTextWriter writer_;
  MemoryWriter text_;
};

}  // namespace CT::Tool
