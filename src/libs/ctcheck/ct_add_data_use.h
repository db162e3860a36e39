// SPDX-License-Identifier: MIT
//
// What is referred to in ADD DATA: which texts, functions and classes begin where. Each reference
// is checked as it is met, and a descriptor's own when the descriptor is met for the first time. In
// the end one pass over the section tells what overlaps and what nobody refers to.
//
// References are relocated and bounded as the reader does it, so what it takes for absent is absent
// here.
#pragma once

#include <cstdint>

#include "ctcheck/ct_bit_set.h"
#include "ctcheck/ct_file_layout.h"

namespace CT::Check {

class AddDataUse {
 public:
  // Borrows both.
  AddDataUse(const FileLayout& layout, DefectList& defects);

  // A reference that stands at `user`. `what` it means, for people. 0 is no reference and no
  // defect.
  void text(std::uint64_t reference, const Spot& user, const char* what) {
    const std::uint64_t at = reference - section_.origin();
    if (at < section_.size() && reference != 0) {
      texts_.add(at);
    } else {
      out_of_range(reference, user, what);
    }
  }
  // Whether the reader finds a function there, or would if no part of ADD DATA were missing.
  bool function(std::uint64_t reference, const Spot& user) {
    const std::uint64_t at = reference - section_.origin();
    if (at < section_.size() && reference != 0 && functions_.has(at)) return true;
    return new_function(reference, user);
  }
  void class_entry(std::uint64_t reference, const Spot& user) {
    const std::uint64_t at = reference - section_.origin();
    if (at < section_.size() && reference != 0 && classes_.has(at)) return;
    new_class(reference, user);
  }

  [[nodiscard]] const BitSet& texts() const { return texts_; }
  [[nodiscard]] const BitSet& functions() const { return functions_; }
  [[nodiscard]] const BitSet& classes() const { return classes_; }

 private:
  struct Shape;

  [[nodiscard]] bool is_missing(std::uint64_t reference, std::uint64_t size) const;
  void out_of_range(std::uint64_t reference, const Spot& user, const char* what,
                    const char* cost = nullptr);
  bool new_function(std::uint64_t reference, const Spot& user);
  void new_class(std::uint64_t reference, const Spot& user);
  const unsigned char* descriptor(std::uint64_t reference, const Spot& user, const Shape& shape);

  const FileLayout& layout_;
  Section section_;
  DefectList& defects_;
  BitSet texts_;
  BitSet functions_;
  BitSet classes_;
};

}  // namespace CT::Check
