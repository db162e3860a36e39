// SPDX-License-Identifier: MIT
//
// What every decoded checkpoint record has in common: its type, its place, and the three common
// fields that it may carry.
//
// A record borrows the file. It is cheap to make and holds little more than where it lies; values
// are decoded when somebody asks. A record that lacks what places it in the tree is kept but not
// valid; damage behind those fields leaves it valid and is told by damage().
#pragma once

#include <QTextStream>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "codetrace/model/ct_entity.h"
#include "codetrace/model/ct_view.h"
#include "kcommon/k_export.h"
#include "kcommon/k_timestamp.h"

namespace CT::Checkpoint {

enum class Type : std::uint8_t {
  STARTUP,
  SHUTDOWN,
  FUNCTION_CALL,
  METHOD_CALL,
  FUNCTION_RETURN,
  FUNCTION_EXCEPTION,
  INCLUDE_CALL,
  INCLUDE_RETURN,
  INCLUDE_EXCEPTION,
  SAPI_WRITE_START,
  SAPI_WRITE_END,
  SAPI_FLUSH,
  SAPI_HEADER,
  SAPI_SEND_HEADERS,
  SCRIPT_EXIT,
  SCRIPT_ERROR,
  CRASH,  // named, but never decoded
  USER_EVENT,
  INVALID,  // every code above, and a record before it is decoded
};

// The type's name as every output shows it; "INVALID" for a code that has none.
CODETRACE_EXPORT std::string_view type_name(Type type);

class CODETRACE_EXPORT Base {
 public:
  // Decodes the common fields and leaves the cursor behind them; on a view that stands on no
  // checkpoint, or on one of a type that has no name, the record stays invalid.
  Base(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  virtual ~Base() = default;
  Base(const Base&) = default;
  Base& operator=(const Base&) = default;

  [[nodiscard]] bool is_valid() const { return valid_; }
  // The address of the header word in DATA: the record's identity.
  [[nodiscard]] const unsigned char* checkpoint() const { return view_.checkpoint(); }
  [[nodiscard]] const CheckpointView& view() const { return view_; }
  [[nodiscard]] Type type() const { return type_; }

  [[nodiscard]] bool has_timestamp() const { return (flags_ & 1) != 0; }
  [[nodiscard]] bool has_memory() const { return (flags_ & 2) != 0; }
  [[nodiscard]] bool has_location() const { return (flags_ & 4) != 0; }
  // The three bits above, timestamp lowest.
  [[nodiscard]] std::uint8_t flags() const { return flags_; }

  // 0 and absent where the record carries none.
  [[nodiscard]] KTime::Timestamp timestamp() const { return timestamp_; }
  [[nodiscard]] std::uint64_t memory() const { return memory_; }
  [[nodiscard]] String filename() const { return section_str(view_.file(), filename_); }
  [[nodiscard]] std::uint32_t line_no() const { return line_no_; }

  // The offset in the payload of the first field that is not whole, if there is one.
  [[nodiscard]] std::optional<std::uint32_t> damage() const { return damage_; }
  // Takes note of a cursor that has read the record to its end.
  void note_damage(const Cursor& cursor);

  // The record as a block of lines.
  virtual void dump(Writer& out) const;
  // The same into a stream of Qt's.
  QTextStream& dump(QTextStream& out) const;

 protected:
  void invalidate() { valid_ = false; }
  // For records that need a payload: one that has none becomes invalid. Whether to read on.
  bool check_payload() {
    valid_ = valid_ && view_.payload() != nullptr;
    return valid_;
  }
  [[nodiscard]] String text(const unsigned char* place) const {
    return section_str(view_.file(), place);
  }

 private:
  CheckpointView view_;
  bool valid_ = false;
  Type type_ = Type::INVALID;
  std::uint8_t flags_ = 0;
  std::optional<std::uint32_t> damage_;
  KTime::Timestamp timestamp_;
  std::uint64_t memory_ = 0;
  const unsigned char* filename_ = nullptr;
  std::uint32_t line_no_ = 0;
};

// The record as one of a class; null if it is of another. These classes have none below them, so
// the types are compared, which is cheaper than a dynamic_cast.
template <class Class>
const Class* record_as(const Base& record) {
  static_assert(std::is_final_v<Class>);
  return typeid(record) == typeid(Class) ? static_cast<const Class*>(&record) : nullptr;
}

}  // namespace CT::Checkpoint
