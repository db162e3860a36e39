// SPDX-License-Identifier: MIT
//
// One pass over ADD DATA from its beginning to its end, once it is known what begins where: texts
// without NUL and such that are not UTF-8, what lies in the middle of something else, and bytes
// that nobody refers to.
#pragma once

#include <cstdint>

#include "ctcheck/ct_add_data_use.h"

namespace CT::Check {

class AddDataPass {
 public:
  // Borrows all.
  AddDataPass(const FileLayout& layout, const AddDataUse& use, DefectList& defects)
      : layout_(layout), section_(layout.add_data), use_(use), defects_(defects) {}

  // `finds_unused`: whether all of DATA was walked over, so that what nobody refers to is unused.
  void run(bool finds_unused);

 private:
  void visit(std::uint64_t at);
  void visit_text(std::uint64_t at);
  void visit_descriptor(std::uint64_t at, const char* what, std::uint64_t size,
                        std::uint64_t user_size);
  void meet_outer(std::uint64_t at, Code code, const char* what);
  void cover(std::uint64_t at, std::uint64_t end, const char* what);
  void check_gap(std::uint64_t begin, std::uint64_t end);
  void check_text(std::uint64_t at, std::uint64_t end);

  const FileLayout& layout_;
  Section section_;
  const AddDataUse& use_;
  DefectList& defects_;
  bool finds_unused_ = true;
  // What was met last of those that reach furthest.
  std::uint64_t covered_begin_ = 0;
  std::uint64_t covered_end_ = 0;
  const char* covered_what_ = "";
  // Behind the room of a descriptor, which may be that of a script's though it is of a built-in
  // one.
  std::uint64_t room_end_ = 0;
  // Behind the NUL of the text that was met last, or behind the section's last byte.
  std::uint64_t text_end_ = 0;
  bool has_text_ = false;
};

}  // namespace CT::Check
