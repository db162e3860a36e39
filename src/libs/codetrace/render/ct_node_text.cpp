// SPDX-License-Identifier: MIT
//
// The lines of the text output, without indentation.
#include "codetrace/render/ct_node_text.h"

#include <array>

#include "codetrace/render/ct_event_line.h"
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_text.h"
#include "codetrace/tree/ct_node.h"

namespace CT::Node {

using Form = Checkpoint::ValueTextWriter::Form;

namespace {

void put_quoted(Writer& out, Checkpoint::String text) {
  out.put('"');
  text.write_escaped(out);
  out.put('"');
}

void put_call_head(const Checkpoint::Function& function, Writer& out) {
  if (!function.is_user()) out.put('*');
  if (function.class_entry() != nullptr) {
    function.class_entry()->name().write(out);
    out.put("::");
  }
  function.name().write(out);
  out.put('(');
}

bool has_short_names(const Checkpoint::Function& function, const Section& names) {
  const Checkpoint::ClassEntry* entry = function.class_entry();
  return RenderedTexts::is_short(names, function.name_place()) &&
         (entry == nullptr || RenderedTexts::is_short(names, entry->name_place()));
}

// Writes the line that each kind of begin gives.
struct LineWriter {
  const Base& node;
  Writer& out;
  TextRoom& room;

  void operator()(const Checkpoint::Base& /*record*/) const {}

  void operator()(const Checkpoint::Startup& record) const {
    out.put("REQUEST STARTUP: REQUEST: ");
    record.url().write(out);
    out.put(", URL: ");
    record.orig_uri().write(out);
  }

  void operator()(const Checkpoint::FunctionCall& call) const {
    const Checkpoint::Function* function = call.function();
    if (function == nullptr) return;
    put_head(*function, call.file()->add_data());
    auto arguments = call.arg_values();
    room.values.write_all(arguments, out, Form::escaped);
    out.put(')');
    if (const auto returned = node.end_as<Checkpoint::FunctionReturn>()) {
      if (!function->is_constructor_or_destructor()) put_outcome(" Returned: ", *returned);
    } else if (const auto thrown = node.end_as<Checkpoint::FunctionException>()) {
      // Kept: constructors and destructors are silent about what they return, not about what they
      // throw.
      put_outcome(" Threw: ", *thrown);
    }
  }

  void operator()(const Checkpoint::IncludeCall& record) const {
    out.put("include ");
    record.include().write(out);
    if (const auto thrown = node.end_as<Checkpoint::IncludeException>()) {
      put_outcome(" Threw: ", *thrown);
    }
  }

  void operator()(const Checkpoint::SapiWriteStart& record) const {
    out.put("WRITE: ");
    put_quoted(out, record.body());
  }

  void operator()(const Checkpoint::SapiHeader& record) const {
    // Kept: an operation that does not exist has a line, with nothing on it.
    if (!record.has_known_op()) return;
    constexpr std::array<std::string_view, 5> heads = {
        "HEADER REPLACE ", "HEADER ", "HEADER DELETE ", "HEADER DELETE ALL", "HEADER SET STATUS"};
    out.put(heads[record.op()]);
    if (record.has_header_line()) put_quoted(out, record.header());
  }

  void operator()(const Checkpoint::ScriptError& record) const {
    out.put("Script error (");
    put_unsigned(out, record.error_num());
    out.put(") ");
    record.error_message().write_escaped(out);
  }

  void operator()(const Checkpoint::UserEvent& record) const {
    put_event_line(out, record.event_name(), record.event_sequence());
  }

  void put_head(const Checkpoint::Function& function, const Section& names) const {
    room.call_heads.put(
        &function, out, [&] { return has_short_names(function, names); },
        [&](Writer& head) { put_call_head(function, head); });
  }

  // " Returned: " or " Threw: " with the record's value, unless that is undef.
  void put_outcome(std::string_view label, const Checkpoint::EndWithValue& end) const {
    auto values = end.values();
    if (values.next_type() == Checkpoint::ValueType::undef) return;
    room.values.write(values, out, Form::escaped, label);
  }
};

}  // namespace

bool Base::write_text(Writer& out, TextRoom& room) const {
  switch (type_) {
    case Type::SAPI_FLUSH: out.put("FLUSH"); break;
    case Type::SAPI_SEND_HEADERS: out.put("SEND_HEADERS"); break;
    case Type::SCRIPT_EXIT: out.put("SCRIPT_EXIT"); break;
    default: Checkpoint::with_record(begin_, LineWriter{*this, out, room});
  }
  return node_info(type_).has_nodes;
}

}  // namespace CT::Node
