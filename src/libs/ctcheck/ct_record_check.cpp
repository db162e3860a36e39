// SPDX-License-Identifier: MIT
#include "ctcheck/ct_record_check.h"

#include <array>
#include <tuple>

namespace CT::Check {

using Checkpoint::Role;
using Checkpoint::Type;
using Format::Field;

namespace {

bool is_call(Type type) { return type == Type::FUNCTION_CALL || type == Type::METHOD_CALL; }

// What a reference of a record means, for people.
const char* reference_name(Type type, std::size_t index) {
  if (type == Type::INCLUDE_CALL) return "the path";
  if (type == Type::USER_EVENT) return "the event's name";
  constexpr std::array startup = {"the URL", "the URI", "the host", "the method"};
  return startup.at(index);
}

}  // namespace

Verdict RecordCheck::check(const Frame& frame) {
  frame_ = frame;
  verdict_ = {};
  verdict_.type = Checkpoint::type_of_code(frame.code);
  const Checkpoint::TypeInfo& info = type_info(verdict_.type);
  if (frame.size == 0) {
    verdict_.is_valid = !info.needs_payload;
    if (info.needs_payload) {
      defects_.add(Code::no_payload, spot(frame.offset),
                   [] { return Words{"the checkpoint has no payload and needs one"}; });
    }
    return verdict_;
  }
  const unsigned char* const payload =
      layout_.data.data() + frame.offset + Format::header_word_size;
  cursor_ = Cursor(payload, payload + frame.size, layout_.big_endian());
  const bool is_placed = is_call(verdict_.type) || info.role == Role::span_end;
  if (!check_common()) {
    verdict_.is_valid = !is_placed;
    return verdict_;
  }
  verdict_.is_valid = !is_placed || check_place();
  if (verdict_.is_valid) check_fields(is_placed ? 1 : 0);
  return verdict_;
}

// The reader says it once of each record.
void RecordCheck::damage(Code code, std::uint64_t at, const char* what, const char* cost) {
  if (verdict_.is_damaged) return;
  verdict_.is_damaged = true;
  defects_.add(code, spot(at), [&] { return Words{what, cost}; });
}

// False if not all of them are there.
bool RecordCheck::check_common() {
  if ((frame_.presence & 1) != 0) {
    const std::uint64_t seconds = cursor_.u64();
    const std::uint32_t nanoseconds = cursor_.u32();
    if (cursor_.ok()) check_time(seconds, nanoseconds);
  }
  if ((frame_.presence & 2) != 0) {
    const Spot spot = here();
    const auto bytes = static_cast<std::int64_t>(cursor_.u64());
    if (bytes < 0) {
      defects_.add(Code::memory, spot, [&] {
        return Words{"the memory in use is " + std::to_string(bytes) + " bytes"};
      });
    }
  }
  if ((frame_.presence & 4) != 0) {
    const Spot spot = here();
    const std::uint64_t file = cursor_.u64();
    cursor_.u32();
    if (cursor_.ok()) use_.text(file, spot, "the name of the file");
  }
  if (!cursor_.ok()) damage(Code::field_end, place(), "the payload ends within its common fields");
  return cursor_.ok();
}

void RecordCheck::check_time(std::uint64_t seconds, std::uint32_t nanoseconds) {
  constexpr std::uint32_t second = 1'000'000'000;
  const std::uint64_t at = place() - Format::timestamp_size;
  const Time now = {static_cast<std::int64_t>(seconds), nanoseconds};
  if (nanoseconds >= second) {
    defects_.add(Code::time_range, spot(at),
                 [&] { return Words{"the time stamp has " + counted(nanoseconds, "nanosecond")}; });
  }
  if (time_ &&
      std::tie(now.seconds, now.nanoseconds) < std::tie(time_->seconds, time_->nanoseconds)) {
    defects_.add(Code::time_back, spot(at), [&] {
      const auto back = static_cast<std::uint64_t>(time_->seconds) - seconds;
      Words words{"the clock went back by "};
      if (back > 1) return words.what.append(counted(back, "second")), words;
      words.what.append(counted(back * second + time_->nanoseconds - nanoseconds, "nanosecond"));
      return words;
    });
  }
  time_ = now;
}

// What places a call or an end in the tree: its first field. False if the record is not valid.
bool RecordCheck::check_place() {
  const Spot spot = here();
  const std::uint64_t reference = cursor_.u64();
  if (!cursor_.ok()) {
    damage(Code::field_end, spot.offset, "the payload ends within its first reference");
    return false;
  }
  if (!is_call(verdict_.type)) {
    verdict_.start = reference;
    return true;
  }
  if (use_.function(reference, spot)) return true;
  if (reference == 0 || layout_.header.add_data_size == 0) {
    defects_.add(Code::ref_none, spot, [] { return Words{"the call names no function"}; });
  }
  return false;
}

void RecordCheck::check_fields(std::size_t first) {
  const Checkpoint::TypeInfo::Layout& layout = type_info(verdict_.type).layout;
  for (std::size_t index = first; index != layout.size(); ++index) {
    if (layout[index] == Field::none) break;
    check_field(layout[index], index);
    if (!cursor_.ok()) return;
  }
  // Kept: a flush has a payload so as to have one.
  if (cursor_.left() != 0 && verdict_.type != Type::SAPI_FLUSH) check_left();
}

void RecordCheck::check_left() {
  defects_.add(Code::bytes_left, here(), [&] {
    const std::size_t left = cursor_.left();
    return Words{counted(left, "byte").append(left == 1 ? " stands" : " stand") +
                 " behind the last field"};
  });
}

void RecordCheck::check_field(Field field, std::size_t index) {
  const Spot spot = here();
  switch (field) {
    case Field::none: break;
    case Field::reference: {
      const std::uint64_t reference = cursor_.u64();
      if (cursor_.ok()) use_.text(reference, spot, reference_name(verdict_.type, index));
      break;
    }
    case Field::u32: cursor_.u32(); break;
    case Field::cut_text: check_cut_text(false); break;
    case Field::inline_text: check_inline_text(); break;
    case Field::value: check_values(1); break;
    case Field::arguments: {
      const std::uint32_t count = cursor_.u32();
      if (!cursor_.ok()) break;
      if (count > cursor_.left()) {
        damage(Code::count, spot.offset, "the call has more arguments than the payload can hold");
      }
      check_values(count);
      break;
    }
    case Field::header_line: {
      const std::uint8_t operation = cursor_.u8();
      constexpr std::uint8_t last_operation = 4;
      if (operation > last_operation) {
        defects_.add(Code::header_operation, spot,
                     [&] { return Words{"the operation is " + std::to_string(operation)}; });
      }
      if (cursor_.ok() && operation < Format::first_operation_without_line) check_cut_text(true);
      break;
    }
  }
  if (!cursor_.ok()) damage(Code::field_end, place(), "the payload ends within a field");
}

}  // namespace CT::Check
