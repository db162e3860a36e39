// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_value_json.h"

#include "codetrace/render/ct_fields_json.h"
#include "codetrace/render/ct_value_json_maps.h"

namespace CT::Checkpoint {

namespace {

void write_object(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  out.begin_object();
  if (const auto* entry = tape.class_entry(i); entry != nullptr) {
    out.key("class");
    if (entry->id() >= 0) {
      out.number(std::int64_t{entry->id()});
    } else {
      CT::write_json(*entry, out);
    }
  }
  out.key("handle");
  out.number(std::int64_t{tape.object_handle(i)});
  out.end_object();
}

void write_resource(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  out.begin_object();
  out.key("handle");
  out.number(tape.resource_handle(i));
  out.key("resource");
  tape.resource_name(i).write_json(out);
  out.end_object();
}

}  // namespace

ValueJsonWriter::ValueJsonWriter() = default;
ValueJsonWriter::~ValueJsonWriter() = default;

void ValueJsonWriter::write(const ValueTape& tape, ValueTape::Index root, JsonWriter& out) {
  if (!open_.empty()) forget();
  if (!begin_value(tape, root, out)) return;
  while (!open_.empty() && out.ok()) {
    ValueTape::Index value = 0;
    if (begin_next(tape, out, value)) {
      begin_value(tape, value, out);
    } else {
      close_array(tape, out);
    }
  }
}

// What a value left open because its output failed, or memory ended.
void ValueJsonWriter::forget() {
  open_.clear();
  if (maps_ != nullptr) maps_->clear();
}

// True when the value is an array, which is then open; else it is written whole.
bool ValueJsonWriter::begin_value(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  switch (tape.type(i)) {
    case ValueType::undef:
    case ValueType::null: out.null(); break;
    case ValueType::false_: out.boolean(false); break;
    case ValueType::true_: out.boolean(true); break;
    case ValueType::long_: out.number(tape.as_long(i)); break;
    case ValueType::double_: out.number(tape.as_double(i)); break;
    case ValueType::string: tape.string(i).write_json(out); break;
    case ValueType::object: write_object(tape, i, out); break;
    case ValueType::resource: write_resource(tape, i, out); break;
    case ValueType::array:
      out.begin_object();
      out.key("array");
      open_.push_back({i, i + 1});
      if (tape.is_list(i)) {
        out.begin_array();
      } else {
        if (maps_ == nullptr) maps_ = std::make_unique<OpenMaps>();
        maps_->open(tape, i);
        out.begin_object();
      }
      return true;
  }
  return false;
}

// Starts the next element or member of the innermost array; false when there is none.
bool ValueJsonWriter::begin_next(const ValueTape& tape, JsonWriter& out, ValueTape::Index& value) {
  OpenArray& array = open_.back();
  if (tape.is_list(array.item)) {
    if (array.at == tape.end(array.item)) return false;
    value = tape.end(array.at);
    array.at = tape.end(value);
    out.element();
    return true;
  }
  return maps_->begin_next(out, value);
}

void ValueJsonWriter::close_array(const ValueTape& tape, JsonWriter& out) {
  const OpenArray& array = open_.back();
  if (tape.is_list(array.item)) {
    out.end_array();
  } else {
    maps_->close();
    out.end_object();
  }
  if (tape.is_cut(array.item)) {
    out.key("cut");
    out.boolean(true);
  }
  out.end_object();
  open_.pop_back();
}

}  // namespace CT::Checkpoint
