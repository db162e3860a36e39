// SPDX-License-Identifier: MIT
//
// KeyedHash: SipHash-1-3 with a key of its own. Names come out of the program that is traced, or
// out of a file from anywhere; without a key that nobody knows they could be chosen such that all
// of them meet in one place of a table.
#pragma once

#include <cstddef>
#include <cstdint>

namespace CT::Write {

class KeyedHash {
 public:
  // A key that the system picks.
  KeyedHash() noexcept;
  // A given one.
  KeyedHash(std::uint64_t key0, std::uint64_t key1) noexcept : key0_(key0), key1_(key1) {}

  [[nodiscard]] std::uint64_t operator()(const unsigned char* bytes,
                                         std::size_t size) const noexcept;

 private:
  std::uint64_t key0_ = 0;
  std::uint64_t key1_ = 0;
};

}  // namespace CT::Write
