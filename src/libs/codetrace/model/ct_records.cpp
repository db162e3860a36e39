// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_records.h"

#include <type_traits>
#include <utility>

namespace CT::Checkpoint {

Startup::Startup(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  if (!check_payload()) return;
  url_ = view.get_add_data_ptr(cursor);
  orig_uri_ = view.get_add_data_ptr(cursor);
  host_ = view.get_add_data_ptr(cursor);
  method_ = view.get_add_data_ptr(cursor);
}

IncludeCall::IncludeCall(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  if (check_payload()) include_ = view.get_add_data_ptr(cursor);
}

End::End(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  if (!check_payload()) return;
  const std::uint64_t reference = cursor.u64();
  if (!cursor.ok()) {
    invalidate();
    return;
  }
  start_ = view.file().data().relocate(reference);
}

EndWithValue::EndWithValue(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : End(view, cursor, cache), value_at_(cursor), cache_(cache) {
  if (is_valid() && view.is_first_sighting()) scan_value(cursor, view, cache);
}

KVal EndWithValue::value() const {
  if (!is_valid()) return {};
  Cursor cursor = value_at_;
  return {view(), cursor, cache_};
}

ValueTape::Index EndWithValue::decode_value(ValueTape& tape) const {
  tape.reset(view());
  Cursor cursor = value_at_;
  return tape.decode(cursor, cache_);
}

SapiWriteStart::SapiWriteStart(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  if (check_payload()) body_ = get_cut_str(cursor);
}

SapiFlush::SapiFlush(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  check_payload();
}

SapiHeader::SapiHeader(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  if (!check_payload()) return;
  op_ = cursor.u8();
  if (has_header_line()) header_ = get_cut_str(cursor);
}

SapiSendHeaders::SapiSendHeaders(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  if (!check_payload()) return;
  code_ = cursor.u32();
  status_ = get_inline_str(cursor);
}

ScriptError::ScriptError(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  if (!check_payload()) return;
  error_num_ = cursor.u32();
  error_message_ = get_inline_str(cursor);
}

UserEvent::UserEvent(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache) {
  if (!check_payload()) return;
  event_name_ = view.get_add_data_ptr(cursor);
  event_sequence_ = cursor.u32();
}

FunctionCall::FunctionCall(const CheckpointView& view, Cursor& cursor, EntityCache* cache)
    : Base(view, cursor, cache), cache_(cache) {
  if (!check_payload()) return;
  const CT::Function* descriptor = resolve_function(view.file(), cursor.u64());
  if (descriptor == nullptr) {
    invalidate();
    return;
  }
  function_ = cache != nullptr ? cache->get_function(view, descriptor)
                               : std::make_shared<Function>(view, descriptor, nullptr, -1);
  EntityCache* numbering = view.is_first_sighting() ? cache : nullptr;
  if (has_this()) {
    this_at_ = cursor;
    scan_value(cursor, view, numbering);
  }
  arg_count_ = cursor.u32();
  args_at_ = cursor;
  if (!view.is_first_sighting()) return;
  for (std::uint32_t i = 0; i != arg_count_ && cursor.ok(); ++i) {
    scan_value(cursor, view, numbering);
  }
}

KVal FunctionCall::this_value() const {
  if (!has_this()) return {};
  Cursor cursor = this_at_;
  return {view(), cursor, cache_};
}

std::vector<KVal> FunctionCall::args() const {
  auto tape = std::make_shared<ValueTape>();
  decode_args(*tape);
  std::vector<KVal> values;
  for (ValueTape::Index i = 0; i != tape->size(); i = tape->end(i)) values.emplace_back(tape, i);
  return values;
}

ValueTape::Index FunctionCall::decode_this(ValueTape& tape) const {
  tape.reset(view());
  Cursor cursor = this_at_;
  return tape.decode(cursor, cache_);
}

void FunctionCall::decode_args(ValueTape& tape) const {
  tape.reset(view());
  Cursor cursor = args_at_;
  for (std::uint32_t i = 0; i != arg_count_ && cursor.ok(); ++i) {
    const ValueTape::Index value = tape.decode(cursor, cache_);
    // An argument of which nothing is whole is dropped.
    if (!cursor.ok() && tape.type(value) != ValueType::array) tape.truncate(value);
  }
}

namespace {

// The one table from type codes to record classes; false for a code without one.
template <class Make>
bool with_record_class(Type type, Make make) {
  switch (type) {
    case Type::STARTUP: return make(std::type_identity<Startup>());
    case Type::SHUTDOWN: return make(std::type_identity<Shutdown>());
    case Type::FUNCTION_CALL:
    case Type::METHOD_CALL: return make(std::type_identity<FunctionCall>());
    case Type::FUNCTION_RETURN: return make(std::type_identity<FunctionReturn>());
    case Type::FUNCTION_EXCEPTION: return make(std::type_identity<FunctionException>());
    case Type::INCLUDE_CALL: return make(std::type_identity<IncludeCall>());
    case Type::INCLUDE_RETURN: return make(std::type_identity<IncludeReturn>());
    case Type::INCLUDE_EXCEPTION: return make(std::type_identity<IncludeException>());
    case Type::SAPI_WRITE_START: return make(std::type_identity<SapiWriteStart>());
    case Type::SAPI_WRITE_END: return make(std::type_identity<SapiWriteEnd>());
    case Type::SAPI_FLUSH: return make(std::type_identity<SapiFlush>());
    case Type::SAPI_HEADER: return make(std::type_identity<SapiHeader>());
    case Type::SAPI_SEND_HEADERS: return make(std::type_identity<SapiSendHeaders>());
    case Type::SCRIPT_EXIT: return make(std::type_identity<ScriptExit>());
    case Type::SCRIPT_ERROR: return make(std::type_identity<ScriptError>());
    case Type::USER_EVENT: return make(std::type_identity<UserEvent>());
    case Type::CRASH:
    case Type::INVALID: break;
  }
  return false;
}

}  // namespace

const Base* Record::decode(const CheckpointView& view, EntityCache* cache) {
  Base* made = nullptr;
  with_record_class(static_cast<Type>(view.type()), [&]<class Class>(std::type_identity<Class>) {
    Cursor cursor;
    made = &record_.emplace<Class>(view, cursor, cache);
    made->note_damage(cursor);
    return true;
  });
  return made;
}

std::shared_ptr<Base> make_record(const CheckpointView& view, EntityCache* cache) {
  std::shared_ptr<Base> made;
  with_record_class(static_cast<Type>(view.type()), [&]<class Class>(std::type_identity<Class>) {
    Cursor cursor;
    made = std::make_shared<Class>(view, cursor, cache);
    made->note_damage(cursor);
    return true;
  });
  return made;
}

}  // namespace CT::Checkpoint
