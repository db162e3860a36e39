// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_plain_json.h"

#include <cmath>

#include "codetrace/render/ct_value_json_maps.h"

namespace CT::Checkpoint {

namespace {

void write_text(const String& text, JsonWriter& out) {
  out.text(text.view(), text.is_cut() ? String::cut_marker : std::string_view());
}

void write_object(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  out.begin_object();
  if (const ClassEntry* entry = tape.class_entry(i); entry != nullptr) {
    out.key("class");
    out.text(entry->name().view());
  }
  out.key("handle");
  out.number(std::int64_t{tape.object_handle(i)});
  out.end_object();
}

void write_resource(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  out.begin_object();
  out.key("resource");
  out.text(tape.resource_name(i).view());
  out.key("handle");
  out.number(tape.resource_handle(i));
  out.end_object();
}

}  // namespace

PlainJsonWriter::PlainJsonWriter() = default;
PlainJsonWriter::~PlainJsonWriter() = default;

void PlainJsonWriter::write(const ValueRef& value, JsonWriter& out) {
  if (value.tape() == nullptr) return out.null();
  open_.clear();  // not empty if an output failed in the middle of an array
  if (maps_ != nullptr) maps_->clear();
  const ValueTape& tape = *value.tape();
  begin_value(tape, value.item(), out);
  while (!open_.empty() && out.ok()) {
    ValueTape::Index next = 0;
    if (begin_next(tape, out, next)) {
      begin_value(tape, next, out);
    } else {
      close_array(tape, out);
    }
  }
}

// Writes a value whole, or opens it if it is an array.
void PlainJsonWriter::begin_value(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  switch (tape.type(i)) {
    case ValueType::undef:
    case ValueType::null: out.null(); break;
    case ValueType::false_: out.boolean(false); break;
    case ValueType::true_: out.boolean(true); break;
    case ValueType::long_: out.number(tape.as_long(i)); break;
    case ValueType::double_: write_double(tape.as_double(i), out); break;
    case ValueType::string: write_text(tape.string(i), out); break;
    case ValueType::object: write_object(tape, i, out); break;
    case ValueType::resource: write_resource(tape, i, out); break;
    case ValueType::array:
      open_.push_back({i, i + 1});
      if (tape.is_list(i)) {
        out.begin_array();
      } else {
        if (maps_ == nullptr) maps_ = std::make_unique<OpenMaps>();
        maps_->open(tape, i);
        out.begin_object();
      }
      break;
  }
}

// Starts the next item or member of the innermost array; false when there is none.
bool PlainJsonWriter::begin_next(const ValueTape& tape, JsonWriter& out, ValueTape::Index& value) {
  OpenArray& array = open_.back();
  if (!tape.is_list(array.item)) return maps_->begin_next(out, value);
  if (array.at == tape.end(array.item)) return false;
  value = tape.end(array.at);
  array.at = tape.end(value);
  out.element();
  return true;
}

void PlainJsonWriter::close_array(const ValueTape& tape, JsonWriter& out) {
  const ValueTape::Index item = open_.back().item;
  const bool is_cut = tape.is_cut(item);
  if (tape.is_list(item)) {
    if (is_cut) {
      out.element();
      out.word(String::cut_marker);
    }
    out.end_array();
  } else {
    if (is_cut) {
      out.key(String::cut_marker);
      out.boolean(true);
    }
    maps_->close();
    out.end_object();
  }
  open_.pop_back();
}

void PlainJsonWriter::write_double(double value, JsonWriter& out) {
  if (std::isnan(value)) return out.word("NaN");
  if (std::isinf(value)) return out.word(value < 0 ? "-Infinity" : "Infinity");
  digits_.clear();
  put_double_json(digits_, value);
  out.out().put(digits_.view());
  if (digits_.view().find_first_of(".e") == std::string_view::npos) out.out().put(".0");
}

}  // namespace CT::Checkpoint
