// SPDX-License-Identifier: MIT
//
// Sizes, codes and places of everything in the two sections of a file: the one place for them, for
// whoever decodes a trace and for whoever writes one. Numbers only; docs/file-format.md tells what
// they mean. Integers are in the writer's byte order.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace CT::Format {

// A checkpoint: a header word and a payload of the size that it tells.
inline constexpr std::uint32_t header_word_size = 4;
inline constexpr std::uint32_t type_mask = 0x1F;
inline constexpr std::uint32_t presence_shift = 5;  // timestamp, memory, location: a bit each
inline constexpr std::uint32_t presence_mask = 7;
inline constexpr std::uint32_t size_shift = 8;
inline constexpr std::uint32_t largest_payload = 0xFFFFFF;

// The common fields at the start of a payload, each there if its presence bit is set.
inline constexpr std::uint32_t timestamp_size = 12;  // u64 seconds, u32 nanoseconds
inline constexpr std::uint32_t memory_size = 8;
inline constexpr std::uint32_t location_size = 12;  // reference to the file's name, u32 line

// All of them, by presence bits.
inline constexpr auto common_sizes = [] {
  std::array<std::uint32_t, presence_mask + 1> sizes{};
  for (std::uint32_t bits = 0; bits != sizes.size(); ++bits) {
    sizes[bits] = ((bits & 1) != 0 ? timestamp_size : 0) + ((bits & 2) != 0 ? memory_size : 0) +
                  ((bits & 4) != 0 ? location_size : 0);
  }
  return sizes;
}();

inline constexpr std::uint32_t reference_size = 8;

// How a field of a record is stored.
enum class Field : std::uint8_t {
  none,
  reference,    // to a text or a descriptor in ADD DATA, or to a checkpoint
  u32,          //
  cut_text,     // i32 n and n bytes; or i32 -original size, u32 n and n bytes
  inline_text,  // u64 n and, unless n is 0, n bytes and a NUL
  value,        //
  arguments,    // u32 n and n values
  header_line,  // u8 operation and, for operations below 3, a cut_text
};

// Descriptors in ADD DATA: offsets of their fields, and sizes without and with those that only
// user-defined ones have.
inline constexpr std::uint8_t user_defined = 2;  // their first byte, if a script defined them
namespace Function {
inline constexpr std::size_t name = 8;
inline constexpr std::size_t class_entry = 16;
inline constexpr std::size_t flags = 24;
inline constexpr std::size_t filename = 32;
inline constexpr std::size_t line = 40;
inline constexpr std::uint64_t size = 28;
inline constexpr std::uint64_t user_size = 44;
}  // namespace Function
namespace Class {
inline constexpr std::size_t name = 8;
inline constexpr std::size_t flags = 16;
inline constexpr std::size_t filename = 24;
inline constexpr std::size_t line = 32;
inline constexpr std::uint64_t size = 20;
inline constexpr std::uint64_t user_size = 36;
}  // namespace Class

// What stands in an array for the pairs, and in a value's place for the array, that the tracer left
// out; outputs put it behind a text that it cut.
inline constexpr std::string_view cut_marker = "**CUT**";

// Header operations below this one carry a header line.
inline constexpr std::uint8_t first_operation_without_line = 3;

}  // namespace CT::Format
