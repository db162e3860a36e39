// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_brief.h"

#include <array>

#include "ctmeasure/ct_node_words.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

using Form = Checkpoint::ValueTextWriter::Form;

constexpr std::size_t brief_columns = 60;
constexpr std::size_t thrown_columns = 120;   // the names of its class and its namespaces
constexpr std::size_t longest_character = 4;  // bytes

std::string header_words(const Checkpoint::SapiHeader& header) {
  constexpr std::array<std::string_view, 5> operations = {"replace", "add", "delete", "delete all",
                                                          "set status"};
  std::string words = "header ";
  words += header.has_known_op() ? operations[header.op()] : std::to_string(header.op());
  return words;
}

}  // namespace

// Of a text that is too long no more is looked at than may be needed.
std::string BriefLines::shown(std::string_view text, std::size_t columns) const {
  if (form_ == ValueForm::full) return shown_text(text);
  const std::size_t enough = (columns + 1) * longest_character;
  return fitted(shown_text(text.substr(0, enough)), columns);
}

std::string BriefLines::quoted(const Checkpoint::String& text) const {
  std::string line = " \"";
  line += shown(text.view(), brief_columns);
  line += text.is_cut() ? "\"\xE2\x80\xA6" : "\"";
  return line;
}

std::string BriefLines::line(NodeId id) {
  if (form_ == ValueForm::none) return lines_.label(id);
  const Node::Base node = trace_.node(id);
  const auto call = node.begin_as<Checkpoint::FunctionCall>();
  return call ? of_call(id, node, *call) : of_other(id, node);
}

std::string BriefLines::of_call(NodeId id, const Node::Base& node,
                                const Checkpoint::FunctionCall& call) {
  text_.clear();
  auto arguments = call.arg_values();
  writer_.write_all(arguments, text_, Form::escaped);
  std::string line = lines_.label(id);
  line += "(";
  line += shown(text_.view(), brief_columns);
  line += ")";
  line += result_of(node);
  return line;
}

// What a call returned is only said in full; that it has no end or threw always is.
std::string BriefLines::result_of(const Node::Base& node) {
  const std::string_view outcome = outcome_of(node);
  if (outcome == "open") return " never ended";
  const bool threw = outcome == "threw";
  const auto end = node.end_as<Checkpoint::EndWithValue>();
  if (!end || (!threw && form_ != ValueForm::full)) return {};
  auto values = end->values();
  if (!threw && values.next_type() == Checkpoint::ValueType::undef) return {};
  text_.clear();
  writer_.write(values, text_, Form::escaped);
  std::string words = threw ? " threw " : " returned ";
  words += shown(text_.view(), thrown_columns);
  return words;
}

std::string BriefLines::of_other(NodeId id, const Node::Base& node) {
  std::string line = lines_.label(id);
  if (const auto request = node.begin_as<Checkpoint::Startup>()) {
    for (const Checkpoint::String& part : {request->method(), request->url()}) {
      if (!part.is_empty()) (line += " ") += shown_text(part.view());
    }
  } else if (const auto write = node.begin_as<Checkpoint::SapiWriteStart>()) {
    const Checkpoint::String body = write->body();
    line += " ";
    line += as_bytes(body.is_cut() ? body.orig_sz : std::int64_t{body.length});
    line += quoted(body);
  } else if (const auto header = node.begin_as<Checkpoint::SapiHeader>()) {
    line = header_words(*header);
    if (header->has_header_line()) line += quoted(header->header());
  } else if (const auto sent = node.begin_as<Checkpoint::SapiSendHeaders>()) {
    line += " ";
    line += std::to_string(sent->code());
  } else if (const auto error = node.begin_as<Checkpoint::ScriptError>()) {
    line += " ";
    const std::string_view level = error_level(error->error_num());
    line += level.empty() ? std::to_string(error->error_num()) : std::string(level);
    line += quoted(error->error_message());
  } else if (const auto event = node.begin_as<Checkpoint::UserEvent>()) {
    line += quoted(event->event_name());
  }
  return line + result_of(node);
}

}  // namespace CT::Tool
