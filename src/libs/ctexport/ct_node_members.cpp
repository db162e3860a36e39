// SPDX-License-Identifier: MIT
#include "ctexport/ct_node_members.h"

#include <array>

#include "ctexport/ct_one_line.h"
#include "ctmeasure/ct_node_words.h"

namespace CT::Export {

namespace {

constexpr std::string_view ellipsis = "\xE2\x80\xA6";

using Form = Checkpoint::ValueTextWriter::Form;

}  // namespace

void NodeMembers::write_text(std::string_view name, const Checkpoint::String& text,
                             JsonWriter& out) const {
  if (text.data == nullptr) return;
  out.key(name);
  const std::string_view stored = text.view();
  if (values_ == Values::brief && stored.size() > brief_size) {
    return out.text(stored.substr(0, whole_characters(stored, brief_size)), ellipsis);
  }
  out.text(stored, text.is_cut() ? Checkpoint::String::cut_marker : std::string_view());
}

void NodeMembers::write_error(const Checkpoint::ScriptError& error, JsonWriter& out) const {
  out.key("number");
  out.number(std::int64_t{error.error_num()});
  if (const std::string_view level = error_level(error.error_num()); !level.empty()) {
    out.key("level");
    out.word(level);
  }
  write_text("message", error.error_message(), out);
}

void NodeMembers::write_header(const Checkpoint::SapiHeader& header, JsonWriter& out) const {
  static constexpr std::array<std::string_view, 5> operations = {"replace", "add", "delete",
                                                                 "delete_all", "set_status"};
  if (header.has_known_op()) {
    out.key("operation");
    out.word(operations[header.op()]);
  }
  write_text("header", header.header(), out);
}

void NodeMembers::write_details(const Node::Base& node, JsonWriter& out) {
  if (const auto include = node.begin_as<Checkpoint::IncludeCall>()) {
    write_text("path", include->include(), out);
  } else if (const auto write = node.begin_as<Checkpoint::SapiWriteStart>()) {
    if (values_ != Values::none) write_text("body", write->body(), out);
    out.key("size");
    out.number(whole_size(write->body()));
  } else if (const auto header = node.begin_as<Checkpoint::SapiHeader>()) {
    write_header(*header, out);
  } else if (const auto sent = node.begin_as<Checkpoint::SapiSendHeaders>()) {
    out.key("code");
    out.number(std::int64_t{static_cast<std::int32_t>(sent->code())});
    write_text("status", sent->status(), out);
  } else if (const auto error = node.begin_as<Checkpoint::ScriptError>()) {
    write_error(*error, out);
  } else if (const auto event = node.begin_as<Checkpoint::UserEvent>()) {
    write_text("event", event->event_name(), out);
    out.key("sequence");
    out.number(std::int64_t{event->event_sequence()});
  }
}

void NodeMembers::write_values(const Node::Base& node, JsonWriter& out) {
  if (values_ == Values::none) return;
  if (const auto call = node.begin_as<Checkpoint::FunctionCall>()) write_call(*call, out);
  write_result(node, out);
}

void NodeMembers::write_call(const Checkpoint::FunctionCall& call, JsonWriter& out) {
  if (values_ == Values::brief) {
    text_.clear();
    if (auto object = call.this_values(); brief_.write(object, text_)) {
      out.key("this");
      write_brief(out);
    }
    text_.clear();
    auto arguments = call.arg_values();
    brief_.write_all(arguments, text_, Form::escaped);
    out.key("args");
    return write_brief(out);
  }
  if (call.has_this()) {
    out.key("this");
    plain_.write(call.this_value(tape_), out);
  }
  out.key("args");
  out.begin_array();
  for (const Checkpoint::ValueRef& argument : call.args(tape_)) {
    out.element();
    plain_.write(argument, out);
  }
  out.end_array();
}

void NodeMembers::write_result(const Node::Base& node, JsonWriter& out) {
  const auto end = node.end_as<Checkpoint::EndWithValue>();
  if (!end) return;
  const bool threw = outcome_of(node) == "threw";
  if (values_ == Values::brief) {
    auto values = end->values();
    if (!threw && values.next_type() == Checkpoint::ValueType::undef) return;
    text_.clear();
    brief_.write(values, text_, Form::escaped);
    out.key(threw ? "thrown" : "returned");
    return write_brief(out);
  }
  out.key(threw ? "thrown" : "returned");
  plain_.write(end->value(tape_), out);
}

void NodeMembers::write_brief(JsonWriter& out) {
  const std::string_view whole = text_.view();
  const std::size_t size = whole_characters(whole, brief_size);
  out.text(whole.substr(0, size), size != whole.size() ? ellipsis : std::string_view());
}

}  // namespace CT::Export
