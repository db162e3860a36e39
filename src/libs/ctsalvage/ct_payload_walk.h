// SPDX-License-Identifier: MIT
//
// Steps through the fields of a checkpoint as its type's row tells them, by the same rules as the
// reader, and hands each reference on its way to a visitor: visit(Refers, place of its 8 bytes).
// Nesting is counted, not followed; a bound on the values keeps a look at bytes that may be no
// checkpoint short.
#pragma once

#include <limits>

#include "codetrace/model/ct_value_types.h"
#include "ctsalvage/ct_frame.h"

namespace CT::Salvage {

// What a reference is meant to point at.
enum class Refers : std::uint8_t { text, function, class_entry, begin };

inline constexpr std::uint64_t all_values = std::numeric_limits<std::uint64_t>::max();

class PayloadWalk {
 public:
  // Requires: that the payload is there. `most_values`: the walk ends there.
  PayloadWalk(const Frame& frame, Order order, std::uint64_t most_values)
      : frame_(frame),
        cursor_(frame.payload(), frame.payload() + frame.size, order.big_endian()),
        values_left_(most_values) {}

  // False if a field is not whole.
  template <class Visit>
  bool run(Visit&& visit);

  // The number of the own field that is not whole; -1 for a common one.
  [[nodiscard]] int broken_field() const { return field_; }
  // Where the field began that is not whole.
  [[nodiscard]] const unsigned char* field_begin() const { return field_begin_; }
  // It ended before the last value.
  [[nodiscard]] bool is_open() const { return is_open_; }
  // A value of a code that there is not, which the reader steps over.
  [[nodiscard]] bool has_unknown_values() const { return has_unknown_values_; }
  // All bytes belong to fields.
  [[nodiscard]] bool is_exact() const { return cursor_.ok() && cursor_.left() == 0; }
  [[nodiscard]] Cursor& cursor() { return cursor_; }

  // Steps over values that follow each other, with all that is in them.
  template <class Visit>
  void values(std::uint64_t wanted, Visit&& visit);

 private:
  template <class Visit>
  void field(Format::Field kind, Visit&& visit);
  template <class Visit>
  std::int32_t value(Visit&& visit);
  void cut_text() {
    const std::int32_t word = cursor_.i32();
    cursor_.bytes(word < 0 ? cursor_.u32() : static_cast<std::uint32_t>(word));
  }
  void inline_text() {
    const std::uint64_t size = cursor_.u64();
    if (size != 0) cursor_.bytes(size < cursor_.left() ? size + 1 : cursor_.left() + 1);
  }
  [[nodiscard]] Refers referred() const {
    if (frame_.is_call()) return Refers::function;
    return frame_.is_end() ? Refers::begin : Refers::text;
  }
  template <class Visit>
  void reference(Refers kind, Visit&& visit) {
    if (const unsigned char* place = cursor_.bytes(Format::reference_size)) visit(kind, place);
  }

  Frame frame_;
  Cursor cursor_;
  std::uint64_t values_left_;
  int field_ = -1;
  const unsigned char* field_begin_ = nullptr;
  bool is_open_ = false;
  bool has_unknown_values_ = false;
};

// One value without its elements: how many pairs follow.
template <class Visit>
inline std::int32_t PayloadWalk::value(Visit&& visit) {
  using Checkpoint::ValueType;
  const std::uint8_t code = cursor_.u8();
  if (code >= Checkpoint::value_types.size()) has_unknown_values_ = true;
  const ValueType type = Checkpoint::value_type_of_code(code);
  switch (type) {
    case ValueType::string: cut_text(); return 0;
    case ValueType::array: return cursor_.i32();
    case ValueType::object:
      reference(Refers::class_entry, visit);
      cursor_.bytes(4);
      return 0;
    case ValueType::resource:
      reference(Refers::text, visit);
      cursor_.bytes(8);
      return 0;
    default: cursor_.bytes(value_type_info(type).body_size); return 0;
  }
}

template <class Visit>
inline void PayloadWalk::values(std::uint64_t wanted, Visit&& visit) {
  for (; wanted != 0 && cursor_.ok(); --wanted) {
    if (values_left_-- == 0) {
      is_open_ = true;
      return;
    }
    const std::int32_t pairs = value(visit);
    if (pairs > 0) wanted += 2 * static_cast<std::uint64_t>(pairs);
  }
}

template <class Visit>
inline void PayloadWalk::field(Format::Field kind, Visit&& visit) {
  switch (kind) {
    case Format::Field::none: break;
    case Format::Field::reference: reference(referred(), visit); break;
    case Format::Field::u32: cursor_.bytes(4); break;
    case Format::Field::cut_text: cut_text(); break;
    case Format::Field::inline_text: inline_text(); break;
    case Format::Field::value: values(1, visit); break;
    case Format::Field::arguments: values(cursor_.u32(), visit); break;
    case Format::Field::header_line:
      if (cursor_.u8() < Format::first_operation_without_line) cut_text();
      break;
  }
}

template <class Visit>
inline bool PayloadWalk::run(Visit&& visit) {
  if (frame_.size == 0) return true;
  field_begin_ = cursor_.position();
  const std::uint32_t common = frame_.common_size();
  cursor_.bytes(common);
  if (!cursor_.ok()) return false;
  if ((frame_.presence & 4) != 0) {
    visit(Refers::text, frame_.payload() + common - Format::location_size);
  }
  const Checkpoint::TypeInfo::Layout& layout = frame_.info().layout;
  for (std::size_t each = 0; each != layout.size(); ++each) {
    if (layout[each] == Format::Field::none) break;
    field_ = static_cast<int>(each);
    field_begin_ = cursor_.position();
    field(layout[each], visit);
    if (!cursor_.ok()) return false;
    if (is_open_) return true;
  }
  return true;
}

}  // namespace CT::Salvage
