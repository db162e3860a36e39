// SPDX-License-Identifier: MIT
//
// Numbers and header words as the file has them, in both byte orders.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

#include "codetrace/model/ct_format.h"

namespace CT::Write {

class Encoding {
 public:
  explicit Encoding(bool big_endian) noexcept
      : big_endian_(big_endian), swap_(big_endian != (std::endian::native == std::endian::big)) {}

  [[nodiscard]] bool big_endian() const noexcept { return big_endian_; }

  // Puts the bytes of a number of 4 or 8 bytes at `to`; returns the place behind them.
  template <std::unsigned_integral Number>
  unsigned char* put(unsigned char* to, Number number) const noexcept {
    static_assert(sizeof number == 4 || sizeof number == 8);
    if (swap_) {
      if constexpr (sizeof number == 4) {
        number = __builtin_bswap32(number);
      } else {
        number = __builtin_bswap64(number);
      }
    }
    std::memcpy(to, &number, sizeof number);
    return to + sizeof number;
  }
  unsigned char* put_i32(unsigned char* to, std::int32_t number) const noexcept {
    return put(to, static_cast<std::uint32_t>(number));
  }

  // The header word of a checkpoint. A big-endian writer lays out its bit fields from the other
  // end, so the word is no byte swap of the little-endian one.
  // Requires: a type up to Format::type_mask, presence bits (timestamp 1, memory 2, location 4), a
  // size up to Format::largest_payload.
  void put_header(unsigned char* to, std::uint32_t type, std::uint32_t presence,
                  std::uint32_t size) const noexcept {
    if (!big_endian_) {
      put(to, type | presence << Format::presence_shift | size << Format::size_shift);
      return;
    }
    const std::uint32_t reversed = (presence & 1) << 2 | (presence & 2) | (presence & 4) >> 2;
    put(to, type << 27 | reversed << 24 | size);
  }

  // The size that a header word tells.
  [[nodiscard]] std::uint32_t payload_size(const unsigned char* word) const noexcept {
    std::uint32_t number = 0;
    std::memcpy(&number, word, sizeof number);
    if (swap_) number = __builtin_bswap32(number);
    return big_endian_ ? number & Format::largest_payload : number >> Format::size_shift;
  }

 private:
  bool big_endian_;
  bool swap_;
};

}  // namespace CT::Write
