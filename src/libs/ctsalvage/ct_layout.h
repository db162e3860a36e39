// SPDX-License-Identifier: MIT
//
// Where the two sections are, in which byte order, and where they lay in the writer's memory: by
// the header as far as the content agrees with it, else by the content.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "ctsalvage/ct_places.h"
#include "ctsalvage/ct_salvage_report.h"

namespace CT::Salvage {

using Bytes = std::span<const unsigned char>;

// The header's fields as they stand in the file.
struct Header {
  static constexpr std::size_t size = 36;
  static constexpr std::uint8_t big_endian_flag = 2;

  bool is_there = false;  // magic and version are right
  std::uint8_t flags = 0;
  std::uint32_t request_id = 0;
  std::uint32_t php_api_version = 0;
  std::uint32_t data_size = 0;
  std::uint32_t add_data_size = 0;
  std::uint64_t orig_data = 0;
  std::uint64_t orig_add_data = 0;

  // Of fewer bytes than it has, nothing is read.
  static Header read(Bytes file);
  void write(unsigned char* to) const;
  [[nodiscard]] std::uint64_t sections_size() const {
    return std::uint64_t{data_size} + add_data_size;
  }
};

// What is worked out.
struct Layout {
  Header header;
  Order order{false};
  Bytes data;                    // the file from its first byte to the end of DATA
  std::uint64_t data_begin = 0;  // where DATA begins in it
  Bytes add_data;
  std::uint64_t add_data_offset = 0;  // in its file
  std::vector<Chain> chains;          // the checkpoints in `data`
};

// Of a file with both sections and a header, or what is left of them.
Layout lay_out(Bytes file, Report& report);
// Of sections in two files, as a recording leaves them that was not finished.
Layout lay_out(Bytes data, Bytes add_data, Report& report);

}  // namespace CT::Salvage
