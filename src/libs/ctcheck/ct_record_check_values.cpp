// SPDX-License-Identifier: MIT
//
// Texts and values in payloads.
#include <cstring>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/model/ct_value_types.h"
#include "ctcheck/ct_record_check.h"

namespace CT::Check {

namespace {

bool is_utf8(const unsigned char* p, const unsigned char* end) {
  while (p != end) {
    constexpr unsigned char first_of_many = 0x80;
    const std::size_t length = *p < first_of_many ? 1 : utf8_sequence_length(p, end);
    if (length == 0) return false;
    p += length;
  }
  return true;
}

}  // namespace

void RecordCheck::check_cut_text(bool is_for_people) {
  const Spot spot = here();
  const std::int32_t word = cursor_.i32();
  auto length = static_cast<std::uint32_t>(word);
  if (word < 0) length = cursor_.u32();
  if (!cursor_.ok()) return;
  const unsigned char* const text = cursor_.bytes(length);
  if (text == nullptr) {
    return damage(Code::text_length, spot.offset,
                  "the text is longer than what is left of the payload");
  }
  if (word < 0 && 0U - static_cast<std::uint32_t>(word) <= length) {
    defects_.add(Code::cut_size, spot, [&] {
      Words words{"the text has " + counted(length, "byte") + " and is cut from "};
      words.what.append(std::to_string(-std::int64_t{word}));
      return words;
    });
  }
  // A text that was cut may end within a character.
  if (is_for_people && word >= 0 && !is_utf8(text, text + length)) {
    defects_.add(Code::utf8, spot, [] { return Words{"the text is not UTF-8"}; });
  }
}

// As the reader takes it: up to its first NUL, wherever that is.
void RecordCheck::check_inline_text() {
  const Spot spot = here();
  const std::uint64_t size = cursor_.u64();
  if (!cursor_.ok() || size == 0) return;
  const unsigned char* const text = cursor_.position();
  const std::size_t room = cursor_.left();
  const void* const nul = room != 0 ? std::memchr(text, 0, room) : nullptr;
  const auto length = nul != nullptr
                          ? static_cast<std::size_t>(static_cast<const unsigned char*>(nul) - text)
                          : room;
  if (size > room) {
    damage(
        Code::text_length, spot.offset, "the text is longer than what is left of the payload",
        nul != nullptr ? "it ends at its first NUL, and what stands behind it is not there" : "");
    if (nul == nullptr) return void(cursor_.bytes(room + 1));
  } else if (size == room && nul == nullptr) {
    damage(Code::text_nul, spot.offset, "the payload ends where the text's NUL should be");
  } else if (length < size) {
    if (size == room) verdict_.is_damaged = true;
    defects_.add(Code::text_short, spot, [&] {
      Words words{"the text of " + counted(size, "byte") + " has a NUL behind "};
      words.what.append(std::to_string(length));
      return words;
    });
  } else if (length > size) {
    defects_.add(Code::text_nul, spot,
                 [&] { return Words{"no NUL stands behind the text's " + counted(size, "byte")}; });
  }
  if (!is_utf8(text, text + length)) {
    defects_.add(Code::utf8, spot, [] { return Words{"the text is not UTF-8"}; });
  }
  cursor_.bytes(size < room ? size + 1 : room + 1);
}

// Values one behind the other; of the arrays that are open it is enough to know how many values
// they still want all together.
void RecordCheck::check_values(std::uint64_t wanted) {
  for (; wanted != 0; --wanted) {
    const std::uint64_t at = place();
    wanted += check_value();
    if (!cursor_.ok()) return damage(Code::value_end, at, "the payload ends within a value");
    if (wanted - 1 > cursor_.left()) {
      damage(Code::count, at, "the array has more values than the payload can hold");
    }
  }
}

// Returns how many values stand in it.
std::uint64_t RecordCheck::check_value() {
  using Checkpoint::ValueType;
  const Spot code_spot = here();
  const std::uint8_t code = cursor_.u8();
  const ValueType type = Checkpoint::value_type_of_code(code);
  if (code >= Checkpoint::value_types.size()) {
    defects_.add(Code::value_type, code_spot,
                 [&] { return Words{"the value's type is " + std::to_string(code)}; });
    return 0;
  }
  if (type == ValueType::array) return check_count();
  if (type == ValueType::string) {
    check_cut_text(false);
    return 0;
  }
  const Spot spot = here();
  Cursor reference = cursor_;
  cursor_.bytes(Checkpoint::value_type_info(type).body_size);
  if (!cursor_.ok()) return 0;
  if (type == ValueType::object) use_.class_entry(reference.u64(), spot);
  if (type == ValueType::resource) use_.text(reference.u64(), spot, "the resource's type");
  return 0;
}

// Of an array: how many values its pairs have.
std::uint64_t RecordCheck::check_count() {
  const Spot spot = here();
  const std::int32_t count = cursor_.i32();
  if (count >= 0) return 2 * static_cast<std::uint64_t>(count);
  defects_.add(Code::count_below, spot,
               [&] { return Words{"the count of the array is " + std::to_string(count)}; });
  return 0;
}

}  // namespace CT::Check
