// SPDX-License-Identifier: MIT
//
// Awkward: random bytes, texts, numbers and values of the script that look for trouble. The same
// seed gives the same sequence on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

#include "fields.h"
#include "value_names.h"

namespace CT::Test {

class Awkward {
 public:
  explicit Awkward(std::uint64_t seed) : random_(seed) {}

  std::uint64_t bits() { return random_(); }
  // 0 to count - 1.
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_() % count); }
  bool one_in(std::size_t count) { return below(count) == 0; }

  // Bytes meant as UTF-8: whole sequences, cut and overlong ones, surrogates, byte-order marks,
  // NULs, quotes, `%1`, long runs of ASCII. At most about `pieces` such pieces.
  std::string bytes(std::size_t pieces);
  // The same, well-formed, without a byte-order mark in front.
  std::string text(std::size_t pieces);
  // Any bit pattern, decimals, whole numbers around powers of two and ten, numbers near to others.
  double real();

  // A value of up to `depth` arrays inside each other; exactly as many when `spine`. Keys of all
  // types, many of which look alike as texts.
  Fields value(std::size_t depth, bool spine, const ValueNames& names);

 private:
  Fields leaf(const ValueNames& names);
  Fields key(std::size_t index, bool list, std::size_t depth, const ValueNames& names);

  std::mt19937_64 random_;
};

}  // namespace CT::Test
