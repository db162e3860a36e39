// SPDX-License-Identifier: MIT
//
// A column of small numbers, packed as it grows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "ctreport/ct_packer.h"

namespace CT::Report {

class Column {
 public:
  Column() : out_(packer_) {}

  void put_byte(std::uint8_t byte) { out_.put(static_cast<char>(byte)); }
  // LEB128 without sign: seven bits a byte, the lowest first, the eighth bit set in all but the
  // last.
  void put_varint(std::uint64_t number) {
    constexpr std::size_t most = 10;
    constexpr unsigned more = 0x80;
    char* at = out_.room(most);
    for (; number >= more; number >>= 7) {
      *at++ = static_cast<char>(static_cast<unsigned char>(number | more));
    }
    *at++ = static_cast<char>(number);
    out_.advance(at);
  }
  // Zigzag: 0, -1, 1, -2 ... are 0, 1, 2, 3.
  void put_signed(std::int64_t number) {
    put_varint(static_cast<std::uint64_t>(number) << 1 ^ static_cast<std::uint64_t>(number >> 63));
  }
  // How far a number is from the one before it, which is `before` and becomes it. What 64 bits do
  // not hold, which only damage makes, wraps.
  void put_difference(std::uint64_t number, std::uint64_t& before) {
    put_signed(static_cast<std::int64_t>(number - before));
    before = number;
  }

  // For columns of texts.
  [[nodiscard]] Writer& out() { return out_; }
  // The whole column; nothing may be put behind it.
  [[nodiscard]] std::string finish() {
    out_.flush();
    return packer_.finish();
  }

 private:
  Packer packer_;
  StreamWriter out_;
};

}  // namespace CT::Report
