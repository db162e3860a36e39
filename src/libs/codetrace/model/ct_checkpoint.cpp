// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_checkpoint.h"

#include <array>

#include "codetrace/render/ct_text.h"

namespace CT::Checkpoint {

namespace {

constexpr std::array<std::string_view, static_cast<std::size_t>(Type::INVALID)> names = {
    "STARTUP",
    "SHUTDOWN",
    "FUNCTION_CALL",
    "METHOD_CALL",
    "FUNCTION_RETURN",
    "FUNCTION_EXCEPTION",
    "INCLUDE_CALL",
    "INCLUDE_RETURN",
    "INCLUDE_EXCEPTION",
    "SAPI_WRITE_START",
    "SAPI_WRITE_END",
    "SAPI_FLUSH",
    "SAPI_HEADER",
    "SAPI_SEND_HEADERS",
    "SCRIPT_EXIT",
    "SCRIPT_ERROR",
    "CRASH",
    "USER_EVENT"};
static_assert(!names.back().empty());

}  // namespace

std::string_view type_name(Type type) {
  return type < Type::INVALID ? names[static_cast<std::size_t>(type)] : "INVALID";
}

Base::Base(const CheckpointView& view, Cursor& cursor, EntityCache* /*cache*/) : view_(view) {
  cursor = Cursor();
  if (!view.is_valid() || view.type() >= static_cast<std::uint8_t>(Type::INVALID)) return;
  type_ = static_cast<Type>(view.type());
  valid_ = true;
  Cursor at = view.cursor();  // a copy, which the compiler keeps in registers
  if (view.has_timestamp()) {
    const std::uint64_t seconds = at.u64();
    const std::uint32_t nanoseconds = at.u32();
    if (at.ok()) {
      flags_ |= 1;
      timestamp_ = {static_cast<std::int64_t>(seconds), nanoseconds};
    }
  }
  if (view.has_memory()) {
    memory_ = at.u64();
    if (at.ok()) flags_ |= 2;
  }
  if (view.has_location()) {
    const unsigned char* filename = view.get_add_data_ptr(at);
    const std::uint32_t line_no = at.u32();
    if (at.ok()) {
      flags_ |= 4;
      filename_ = filename;
      line_no_ = line_no;
    }
  }
  cursor = at;
}

void Base::note_damage(const Cursor& cursor) {
  if (cursor.ok() || view_.payload() == nullptr) return;
  damage_ = static_cast<std::uint32_t>(cursor.position() - view_.payload());
}

QTextStream& Base::dump(QTextStream& out) const {
  MemoryWriter text;
  dump(text);
  return out << to_qstring(text.view());
}

}  // namespace CT::Checkpoint
