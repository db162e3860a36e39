// SPDX-License-Identifier: MIT
//
// A checkpoint as its header word tells it, whatever file or memory it lies in, and numbers in the
// order of the file. Owns nothing; whoever asks has made sure that the bytes are there.
#pragma once

#include <cstdint>
#include <cstring>

#include "codetrace/bytes/ct_cursor.h"
#include "codetrace/model/ct_format.h"
#include "codetrace/model/ct_types.h"

namespace CT::Salvage {

// Integers of 4 and 8 bytes in one of both byte orders.
class Order {
 public:
  explicit Order(bool big_endian)
      : big_endian_(big_endian), swaps_(big_endian != (std::endian::native == std::endian::big)) {}

  [[nodiscard]] bool big_endian() const { return big_endian_; }

  [[nodiscard]] std::uint32_t u32(const unsigned char* at) const {
    std::uint32_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return swaps_ ? __builtin_bswap32(value) : value;
  }
  [[nodiscard]] std::uint64_t u64(const unsigned char* at) const {
    std::uint64_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return swaps_ ? __builtin_bswap64(value) : value;
  }
  void put(unsigned char* to, std::uint32_t value) const {
    if (swaps_) value = __builtin_bswap32(value);
    std::memcpy(to, &value, sizeof value);
  }
  void put(unsigned char* to, std::uint64_t value) const {
    if (swaps_) value = __builtin_bswap64(value);
    std::memcpy(to, &value, sizeof value);
  }

 private:
  bool big_endian_;
  bool swaps_;
};

struct Frame {
  const unsigned char* at = nullptr;  // the header word
  std::uint32_t size = 0;             // of the payload
  std::uint8_t code = 0;
  std::uint8_t presence = 0;  // timestamp 1, memory 2, location 4

  [[nodiscard]] const Checkpoint::TypeInfo& info() const {
    return type_info(Checkpoint::type_of_code(code));
  }
  [[nodiscard]] Checkpoint::Type type() const { return Checkpoint::type_of_code(code); }
  [[nodiscard]] Checkpoint::Role role() const { return info().role; }
  [[nodiscard]] const unsigned char* payload() const { return at + Format::header_word_size; }
  [[nodiscard]] std::uint64_t whole_size() const {
    return std::uint64_t{Format::header_word_size} + size;
  }
  [[nodiscard]] std::uint32_t common_size() const { return Format::common_sizes[presence]; }
  [[nodiscard]] bool is_call() const {
    return type() == Checkpoint::Type::FUNCTION_CALL || type() == Checkpoint::Type::METHOD_CALL;
  }
  [[nodiscard]] bool is_end() const { return role() == Checkpoint::Role::span_end; }
  // Of an end that has its own fields: where the reference to its begin stands.
  [[nodiscard]] const unsigned char* reference() const { return payload() + common_size(); }
};

// Requires: 4 bytes.
inline Frame frame_at(const unsigned char* at, Order order) {
  const std::uint32_t word = order.u32(at);
  Frame frame;
  frame.at = at;
  if (order.big_endian()) {
    const std::uint32_t lead = word >> 24;
    frame.size = word & Format::largest_payload;
    frame.code = static_cast<std::uint8_t>(lead >> 3);
    frame.presence = static_cast<std::uint8_t>((lead & 4) >> 2 | (lead & 2) | (lead & 1) << 2);
  } else {
    frame.size = word >> Format::size_shift;
    frame.code = static_cast<std::uint8_t>(word & Format::type_mask);
    frame.presence =
        static_cast<std::uint8_t>(word >> Format::presence_shift & Format::presence_mask);
  }
  return frame;
}

// The header word of a checkpoint. Requires: a payload within its largest size.
inline void put_header_word(unsigned char* to, std::uint8_t code, std::uint8_t presence,
                            std::uint32_t size, Order order) {
  if (order.big_endian()) {
    const std::uint32_t flags = (presence & 1U) << 2 | (presence & 2U) | (presence & 4U) >> 2;
    order.put(to, std::uint32_t{code} << 27 | flags << 24 | size);
  } else {
    order.put(to, std::uint32_t{code} | std::uint32_t{presence} << Format::presence_shift |
                      size << Format::size_shift);
  }
}

}  // namespace CT::Salvage
