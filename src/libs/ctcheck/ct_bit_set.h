// SPDX-License-Identifier: MIT
//
// A bit for each byte of a section.
#pragma once

#include <bit>
#include <cassert>
#include <cstdint>
#include <vector>

namespace CT::Check {

class BitSet {
 public:
  static constexpr std::uint64_t word_bits = 64;

  explicit BitSet(std::uint64_t size) : words_((size + word_bits - 1) / word_bits) {}

  // Requires: below the size.
  [[nodiscard]] bool has(std::uint64_t at) const {
    return (words_[at / word_bits] >> (at % word_bits) & 1) != 0;
  }
  void add(std::uint64_t at) { words_[at / word_bits] |= std::uint64_t{1} << (at % word_bits); }

  [[nodiscard]] std::uint64_t word_count() const { return words_.size(); }
  // The bits from 64 * `i` on, the first of them lowest.
  [[nodiscard]] std::uint64_t word(std::uint64_t i) const { return words_[i]; }

 private:
  std::vector<std::uint64_t> words_;
};

}  // namespace CT::Check
