// SPDX-License-Identifier: MIT
//
// The fields of one checkpoint after the other, by the table of types: what is not whole, what is
// not what it should be, and where its references lead. It comes to the reader's judgement about
// each: whether the record is valid, and whether the reader calls it damaged.
#pragma once

#include <cstdint>
#include <optional>

#include "codetrace/model/ct_types.h"
#include "ctcheck/ct_add_data_use.h"

namespace CT::Check {

// A checkpoint that lies whole in DATA.
struct Frame {
  std::uint32_t offset;  // of its header word in DATA
  std::uint8_t code;     // of its type
  std::uint8_t presence;
  std::uint32_t size;  // of its payload
};

// What the walk goes on with.
struct Verdict {
  Checkpoint::Type type = Checkpoint::Type::INVALID;
  bool is_valid = false;    // has a place in the tree
  bool is_damaged = false;  // as the reader says it
  std::uint64_t start = 0;  // of an end: the reference to its begin
};

class RecordCheck {
 public:
  // Borrows all.
  RecordCheck(const FileLayout& layout, AddDataUse& use, DefectList& defects)
      : layout_(layout), use_(use), defects_(defects) {}

  // Requires: a type with a name that is decoded.
  Verdict check(const Frame& frame);

 private:
  bool check_common();
  void check_time(std::uint64_t seconds, std::uint32_t nanoseconds);
  bool check_place();
  void check_fields(std::size_t first);
  void check_field(Format::Field field, std::size_t index);
  void check_cut_text(bool is_for_people);
  void check_inline_text();
  void check_values(std::uint64_t wanted);
  std::uint64_t check_value();
  std::uint64_t check_count();
  void check_left();
  void damage(Code code, std::uint64_t at, const char* what, const char* cost = "");

  [[nodiscard]] std::uint64_t place() const {
    return static_cast<std::uint64_t>(cursor_.position() - layout_.data.data());
  }
  [[nodiscard]] Spot spot(std::uint64_t at) const {
    return {Part::data, at, verdict_.type, frame_.offset};
  }
  [[nodiscard]] Spot here() const { return spot(place()); }

  const FileLayout& layout_;
  AddDataUse& use_;
  DefectList& defects_;
  Frame frame_ = {};
  Verdict verdict_;
  Cursor cursor_;
  // Of the checkpoint before that had one.
  struct Time {
    std::int64_t seconds;
    std::uint32_t nanoseconds;
  };
  std::optional<Time> time_;
};

}  // namespace CT::Check
