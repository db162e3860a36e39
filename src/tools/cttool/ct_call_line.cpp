// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_call_line.h"

#include <algorithm>

#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

using Form = Checkpoint::ValueTextWriter::Form;

std::string NodeLines::label(NodeId id) {
  const std::int32_t function = measures_[id].function;
  if (function >= 0) {
    return shown_text(name_of(trace_.functions()[static_cast<std::size_t>(function)]));
  }
  std::string label(kind_of(trace_.type(id)));
  if (const auto include = trace_.node(id).begin_as<Checkpoint::IncludeCall>()) {
    label.append(" ").append(shown_text(include->include().view()));
  }
  return label;
}

std::string NodeLines::line(NodeId id) {
  const Node::Base node = trace_.node(id);
  const auto call = node.begin_as<Checkpoint::FunctionCall>();
  if (!call) return label(id);
  text_.clear();
  auto arguments = call->arg_values();
  writer_.write_all(arguments, text_, Form::escaped);
  text_.put(')');
  if (node.end() == nullptr) text_.put(" never ended");
  if (const auto end = node.end_as<Checkpoint::EndWithValue>()) {
    auto values = end->values();
    const std::string_view word = outcome_of(node) == "threw" ? " threw " : " returned ";
    if (values.next_type() != Checkpoint::ValueType::undef) {
      writer_.write(values, text_, Form::escaped, word);
    }
  }
  return label(id) + "(" + shown_text(text_.view());
}

std::string NodeLines::place(NodeId id) const {
  const Node::Base node = trace_.node(id);
  if (!node.begin().has_location()) return {};
  std::string place = shown_text(node.begin().filename().view());
  if (const auto line = node.begin().line_no(); line != 0) {
    place += ':';
    place += std::to_string(line);
  }
  return place;
}

std::vector<NodeId> NodeLines::way_to(NodeId id) const {
  std::vector<NodeId> way;
  for (NodeId above = trace_.parent(id); above != Storage::no_node; above = trace_.parent(above)) {
    way.push_back(above);
  }
  std::reverse(way.begin(), way.end());
  return way;
}

}  // namespace CT::Tool
