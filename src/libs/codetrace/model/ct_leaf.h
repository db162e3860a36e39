// SPDX-License-Identifier: MIT
//
// Values that are no arrays, read where they stand: most values are, and need no tape. And the
// values of a record one after the other, each in the cheaper of both forms.
#pragma once

#include <cstdint>

#include "codetrace/model/ct_checkpoint.h"
#include "codetrace/model/ct_value_ref.h"
#include "codetrace/model/ct_value_tape.h"

namespace CT::Checkpoint {

// By type; what a value of the type does not have is 0, absent or null.
struct Leaf {
  ValueType type = ValueType::undef;
  std::uint32_t object_handle = 0;
  std::int64_t number = 0;  // long; handle of a resource
  double real = 0;
  String string;
  const ClassEntry* class_entry = nullptr;
  const unsigned char* resource_name = nullptr;  // its place in ADD DATA
};

// Reads the value at the cursor and steps over it. False, and the cursor stays, for an array and
// for a value that is not whole.
inline bool read_leaf(Cursor& cursor, const File& file, const Entities* entities, Leaf& leaf) {
  Cursor at = cursor;
  const std::uint8_t code = at.u8();
  leaf.type = code <= static_cast<std::uint8_t>(ValueType::resource) ? static_cast<ValueType>(code)
                                                                     : ValueType::undef;
  switch (leaf.type) {
    case ValueType::undef:
    case ValueType::null:
    case ValueType::false_:
    case ValueType::true_: break;
    case ValueType::long_: leaf.number = at.i64(); break;
    case ValueType::double_: leaf.real = at.f64(); break;
    case ValueType::string: leaf.string = get_cut_str(at); break;
    case ValueType::array: return false;
    case ValueType::object: {
      const std::uint64_t reference = at.u64();
      leaf.class_entry = entities != nullptr ? entities->find_class(reference) : nullptr;
      leaf.object_handle = at.u32();
      break;
    }
    case ValueType::resource:
      leaf.resource_name = file.add_data().resolve(at.u64());
      leaf.number = at.i64();
      break;
  }
  if (!at.ok()) return false;
  cursor = at;
  return true;
}

// The leaf at an item of a tape. Requires: no array.
inline Leaf leaf_of(const ValueTape& tape, ValueTape::Index item) {
  assert(tape.type(item) != ValueType::array);
  Leaf leaf;
  if (tape.type(item) == ValueType::undef) return leaf;
  Cursor cursor = tape.place_of(item);
  read_leaf(cursor, tape.file(), tape.entities(), leaf);
  return leaf;
}

// Values that follow each other in the payload of a record. Borrows: what the record borrows.
class ValueStream {
 public:
  enum class Next { none, leaf, array };

  ValueStream(const Base& record, const Cursor& cursor, std::uint32_t count)
      : record_(record), cursor_(cursor), left_(count) {}

  // The next value: as leaf(), or as array() on the tape, which is reset for it. None at the end,
  // and for a value of which nothing is whole.
  Next next(ValueTape& tape) {
    if (left_ == 0 || !cursor_.ok()) return Next::none;
    --left_;
    if (read_leaf(cursor_, *record_.file(), record_.entities(), leaf_)) return Next::leaf;
    record_.reset(tape);
    array_ = {tape, tape.decode(cursor_)};
    return array_.type() == ValueType::array ? Next::array : Next::none;
  }
  [[nodiscard]] const Leaf& leaf() const { return leaf_; }
  [[nodiscard]] const ValueRef& array() const { return array_; }

 private:
  const Base& record_;
  Cursor cursor_;
  std::uint32_t left_;
  Leaf leaf_;
  ValueRef array_;
};

}  // namespace CT::Checkpoint
