// SPDX-License-Identifier: MIT
//
// Bytes in base64 (RFC 4648: the standard alphabet, padded, no line breaks), as they come.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "codetrace/render/ct_writer.h"

namespace CT::Report {

class Base64 {
 public:
  // Borrows: the output.
  explicit Base64(Writer& out) : out_(out) {}

  // The pieces of one text may have any length.
  void put(std::string_view bytes);
  // The end of the text. What comes next is another one.
  void finish();

  // Characters that so many bytes become.
  static constexpr std::uint64_t size_of(std::uint64_t bytes) { return (bytes + 2) / 3 * 4; }

 private:
  Writer& out_;
  std::array<unsigned char, 3> rest_ = {};  // bytes that are no whole group yet
  std::size_t rest_size_ = 0;
};

}  // namespace CT::Report
