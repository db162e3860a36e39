// SPDX-License-Identifier: MIT
//
// A node as an object of plain JSON, with the same names in every verb.
#pragma once

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_plain_json.h"
#include "codetrace/tree/ct_fields.h"
#include "ctmeasure/ct_measures.h"

namespace CT::Tool {

class NodeJson {
 public:
  // Borrows both.
  NodeJson(const Trace& trace, const Measures& measures) : trace_(trace), measures_(measures) {}

  // The members that every node has: id, parent, depth, kind, name of a call, times, memory, place
  // and outcome; then `values`, those of a call: this, args, returned, thrown. Null is what a trace
  // does not have. The object is begun and ended by the caller.
  void write_measures(NodeId id, JsonWriter& out);
  void write_values(NodeId id, JsonWriter& out);

  // One of the values of a call alone; null where there is none.
  void write_args(const Node::Base& node, JsonWriter& out);
  void write_this(const Node::Base& node, JsonWriter& out);
  void write_result(const Node::Base& node, bool threw, JsonWriter& out);

 private:
  const Trace& trace_;
  const Measures& measures_;
  Checkpoint::PlainJsonWriter writer_;
  Checkpoint::ValueTape tape_;
};

}  // namespace CT::Tool
