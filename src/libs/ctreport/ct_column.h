// SPDX-License-Identifier: MIT
//
// A column of small numbers, packed as it grows.
#pragma once

#include <cstdint>
#include <string>

#include "ctreport/ct_packer.h"
#include "ctreport/ct_varint.h"

namespace CT::Report {

class Column {
 public:
  Column() : out_(packer_) {}

  void put_byte(std::uint8_t byte) { out_.put(static_cast<char>(byte)); }
  void put_varint(std::uint64_t number) { CT::Report::put_varint(out_, number); }
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
