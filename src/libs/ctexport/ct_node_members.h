// SPDX-License-Identifier: MIT
//
// What a node has beside times and memory, as members of an object of JSON: the values of a call,
// the text of an error, the line of a header and so on, with the names that the tables of SQL have.
#pragma once

#include <string_view>

#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_plain_json.h"
#include "codetrace/render/ct_value_text.h"
#include "codetrace/tree/ct_node.h"
#include "ctexport/ct_export_source.h"

namespace CT::Export {

class NodeMembers {
 public:
  explicit NodeMembers(Values values) : values_(values) {}

  // Of a node that is no call: `path`; `body` and `size`; `operation` and `header`; `code` and
  // `status`; `number`, `level` and `message`; `event` and `sequence`. What the node has not got is
  // left out, and of what is a value no more is written than is wanted.
  void write_details(const Node::Base& node, JsonWriter& out);
  // Of a call: `this`, `args`, and `returned` or `thrown`, if it did; of an include that threw
  // `thrown`. In full as plain JSON, in which whole numbers beyond 2^53 are texts; briefly as texts
  // in the manner of PHP.
  void write_values(const Node::Base& node, JsonWriter& out);

 private:
  void write_text(std::string_view name, const Checkpoint::String& text, JsonWriter& out) const;
  void write_error(const Checkpoint::ScriptError& error, JsonWriter& out) const;
  void write_header(const Checkpoint::SapiHeader& header, JsonWriter& out) const;
  void write_call(const Checkpoint::FunctionCall& call, JsonWriter& out);
  void write_result(const Node::Base& node, JsonWriter& out);
  void write_brief(JsonWriter& out);

  Values values_;
  Checkpoint::PlainJsonWriter plain_{Checkpoint::PlainJsonWriter::LargeNumbers::texts};
  Checkpoint::ValueTape tape_;
  Checkpoint::ValueTextWriter brief_;
  MemoryWriter text_;
};

// Bytes of a value that is shown briefly.
inline constexpr std::size_t brief_size = 120;

}  // namespace CT::Export
