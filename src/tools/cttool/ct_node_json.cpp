// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_node_json.h"

#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_call_line.h"

namespace CT::Tool {

namespace {

void write_text_or_null(std::string_view text, JsonWriter& out) {
  text.empty() ? out.null() : out.text(text);
}

}  // namespace

void NodeJson::write_measures(NodeId id, JsonWriter& out) {
  const Measure& measure = measures_[id];
  const Node::Base node = trace_.node(id);
  out.key("id");
  out.number(std::int64_t{id});
  out.key("parent");
  trace_.parent(id) >= 0 ? out.number(std::int64_t{trace_.parent(id)}) : out.null();
  out.key("depth");
  out.number(std::int64_t{trace_.depth(id)});
  out.key("kind");
  out.word(kind_of(node.type()));
  out.key("name");
  if (measure.function >= 0) {
    out.text(name_of(trace_.functions()[static_cast<std::size_t>(measure.function)]));
  } else {
    out.null();
  }
  out.key("start_ns");
  out.number(measure.start_ns);
  out.key("total_ns");
  out.number(measure.total_ns);
  out.key("own_ns");
  out.number(measures_.own(id).ns);
  out.key("memory");
  measure.has(Measure::has_memory) ? put_unsigned(out.out(), measure.memory) : out.null();
  out.key("memory_delta");
  measure.has(Measure::has_delta) ? out.number(measure.memory_delta) : out.null();
  out.key("own_memory");
  measure.has(Measure::has_delta) ? out.number(measures_.own(id).memory) : out.null();
  out.key("file");
  write_text_or_null(node.begin().filename().view(), out);
  out.key("line");
  node.begin().has_location() ? out.number(std::int64_t{node.begin().line_no()}) : out.null();
  out.key("outcome");
  write_text_or_null(outcome_of(node), out);
}

void NodeJson::write_values(NodeId id, JsonWriter& out) {
  const Node::Base node = trace_.node(id);
  out.key("this");
  write_this(node, out);
  out.key("args");
  write_args(node, out);
  out.key("returned");
  write_result(node, false, out);
  out.key("thrown");
  write_result(node, true, out);
}

void NodeJson::write_args(const Node::Base& node, JsonWriter& out) {
  const auto call = node.begin_as<Checkpoint::FunctionCall>();
  if (!call) return out.null();
  out.begin_array();
  for (const Checkpoint::ValueRef& argument : call->args(tape_)) {
    out.element();
    writer_.write(argument, out);
  }
  out.end_array();
}

void NodeJson::write_this(const Node::Base& node, JsonWriter& out) {
  const auto call = node.begin_as<Checkpoint::FunctionCall>();
  call && call->has_this() ? writer_.write(call->this_value(tape_), out) : out.null();
}

void NodeJson::write_result(const Node::Base& node, bool threw, JsonWriter& out) {
  const auto end = node.end_as<Checkpoint::EndWithValue>();
  const bool is_there = end && (outcome_of(node) == "threw") == threw;
  is_there ? writer_.write(end->value(tape_), out) : out.null();
}

}  // namespace CT::Tool
