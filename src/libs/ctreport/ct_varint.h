// SPDX-License-Identifier: MIT
//
// Whole numbers in as few bytes as they need.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codetrace/render/ct_writer.h"

namespace CT::Report {

// LEB128 without sign: seven bits a byte, the lowest first, the eighth bit set in all but the last.
inline void put_varint(Writer& out, std::uint64_t number) {
  constexpr std::size_t most = 10;
  constexpr unsigned more = 0x80;
  char* at = out.room(most);
  for (; number >= more; number >>= 7) {
    *at++ = static_cast<char>(static_cast<unsigned char>(number | more));
  }
  *at++ = static_cast<char>(number);
  out.advance(at);
}

}  // namespace CT::Report
