// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_records.h"

namespace CT::Checkpoint {

namespace {

// A tape for values of the record that are kept.
std::shared_ptr<ValueTape> kept_tape(const Base& record) {
  return make_kept_tape(record.view(), record.entities()->shared_from_this());
}

}  // namespace

KVal EndWithValue::value() const {
  if (!is_valid()) return {};
  auto tape = kept_tape(*this);
  const ValueRef decoded = value(*tape);
  return {std::move(tape), decoded.item()};
}

ValueRef EndWithValue::value(ValueTape& tape) const {
  reset(tape);
  ValueCursor values = this->values();
  return {tape, tape.decode(values.at)};
}

String SapiWriteStart::body() const {
  Cursor cursor = own();
  return get_cut_str(cursor);
}

String SapiHeader::header() const {
  Cursor cursor = own();
  if (cursor.u8() >= Format::first_operation_without_line) return {};
  return get_cut_str(cursor);
}

String SapiSendHeaders::status() const {
  Cursor cursor = own();
  cursor.u32();
  return get_inline_str(cursor);
}

String ScriptError::error_message() const {
  Cursor cursor = own();
  cursor.u32();
  return get_inline_str(cursor);
}

std::uint32_t UserEvent::event_sequence() const {
  Cursor cursor = own();
  cursor.bytes(Format::reference_size);
  return cursor.u32();
}

KVal FunctionCall::this_value() const {
  if (!has_this()) return {};
  auto tape = kept_tape(*this);
  const ValueRef decoded = this_value(*tape);
  return {std::move(tape), decoded.item()};
}

ValueRef FunctionCall::this_value(ValueTape& tape) const {
  reset(tape);
  Cursor cursor = has_this() ? own() : Cursor();
  cursor.bytes(Format::reference_size);
  return {tape, tape.decode(cursor)};
}

Cursor FunctionCall::arguments() const {
  Cursor cursor = own();
  cursor.bytes(Format::reference_size);
  if (has_this()) scan_values(cursor, 1, nullptr);
  return cursor;
}

std::vector<KVal> FunctionCall::args() const {
  if (!is_valid()) return {};
  const auto tape = kept_tape(*this);
  std::vector<KVal> values;
  for (const ValueRef& value : args(*tape)) values.emplace_back(tape, value.item());
  return values;
}

Values FunctionCall::args(ValueTape& tape) const {
  reset(tape);
  const ValueCursor values = arg_values();
  tape.decode_all(values.at, values.left);
  return Values(tape);
}

}  // namespace CT::Checkpoint
