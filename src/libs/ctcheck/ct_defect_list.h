// SPDX-License-Identifier: MIT
//
// Takes defects as they are found: counts all, keeps the first ones of each code. What is to be
// said is made only for those that are kept, so a million defects cost no more than counting them.
#pragma once

#include <string>
#include <utility>

#include "ctcheck/ct_check.h"

namespace CT::Check {

// What a defect says; an empty cost is that of its code.
struct Words {
  std::string what;
  std::string cost = {};
};

class DefectList {
 public:
  // Borrows: what it adds to.
  DefectList(Result& result, std::size_t limit) : result_(result), limit_(limit) {}

  // `words` makes the Words.
  template <class MakeWords>
  void add(Code code, const Spot& spot, MakeWords words) {
    std::uint64_t& count = result_.counts[static_cast<std::size_t>(code)];
    if (++count <= limit_ || limit_ == 0) keep(code, spot, words());
  }
  // Takes all of a code back.
  void forget(Code code);
  // Puts them in order. `data_at`, `add_data_at`: where the sections begin in the file.
  void finish(std::uint64_t data_at, std::uint64_t add_data_at);

 private:
  void keep(Code code, const Spot& spot, Words words);

  Result& result_;
  std::size_t limit_;
};

// "DATA+0x38".
std::string place_name(Part part, std::uint64_t offset);
// "1 byte", "12 bytes".
std::string counted(std::uint64_t count, const char* what);

}  // namespace CT::Check
