// SPDX-License-Identifier: MIT
//
// A column of small numbers, packed as it grows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "ctreport/ct_packer.h"

namespace CT::Report {

class Column {
 public:
  // The first bytes are packed with the usual effort; more of them with little.
  static constexpr std::uint64_t packed_well = std::uint64_t{256} << 10;

  Column() : out_(sink_) {}

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
    return sink_.packer.finish();
  }

 private:
  struct Hurrying final : Sink {
    Packer packer;
    std::uint64_t size = 0;

    bool write(std::string_view bytes) override {
      const bool had_time = size < packed_well;
      size += bytes.size();
      packer.write(bytes);
      if (had_time && size >= packed_well) packer.hurry();
      return true;
    }
  };

  Hurrying sink_;
  StreamWriter out_;
};

}  // namespace CT::Report
