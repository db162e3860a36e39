// SPDX-License-Identifier: MIT
//
// TraceParts: the bytes of a trace file taken apart into header, DATA and ADD DATA, and put
// together again with true sizes in the header. It shares no code with the library, so that it can
// be built beside any version of it. `frames` walks DATA as far as there are whole checkpoints.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fields.h"

namespace CT::Test {

inline constexpr std::size_t header_word_size = 4;

// A checkpoint in DATA.
struct Frame {
  std::size_t offset;  // of its header word
  std::uint8_t type;
  std::uint8_t flags;  // bit 0 timestamp, bit 1 memory, bit 2 location
  std::size_t size;    // of its payload

  std::size_t payload() const { return offset + header_word_size; }
  std::size_t end() const { return payload() + size; }
};

class TraceParts {
 public:
  // Nothing if the bytes are no trace file by their header.
  static std::optional<TraceParts> of(std::string_view bytes);

  std::string bytes() const;
  std::vector<Frame> frames() const;
  ByteOrder order() const;

  std::string header;
  std::string data;
  std::string add_data;
};

// The unsigned number at the start of `bytes`, which must hold `width` bytes.
std::uint64_t number_at(std::string_view bytes, std::size_t width, ByteOrder order);

}  // namespace CT::Test
