// SPDX-License-Identifier: MIT
//
// What a trace that is written consists of besides values: the facts of its header, limits, and
// what records, functions and classes have. docs/file-format.md tells what all of it means.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

namespace CT::Write {

// An address as the file has it: the origin of a section and an offset in it, modulo 2^64. 0 is
// none.
using Reference = std::uint64_t;

// From where on the writer leaves something out. What it leaves out is marked as the format says,
// so a reader sees that something is missing. Without limits nothing is.
struct Limits {
  static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

  // Bytes of a string, of what was written, of a header line. Longer ones are kept up to here, or
  // to the last character that ends before, and keep their original size.
  std::uint32_t string_bytes = none;
  // Pairs of one array. Behind them comes the marker, and the rest is dropped.
  std::uint32_t array_elements = none;
  // Arrays within each other; what lies deeper is a marker. 0 leaves no array its pairs.
  std::uint32_t depth = none;
  // Bytes of each section: a record or text that goes beyond is refused.
  std::uint32_t section_bytes = none;
};

// For the header, and how to write.
struct Options {
  bool big_endian = false;  // both sections; the header always is
  std::uint8_t flags = 0;   // further bits of the header's flags, of which readers know none
  std::uint32_t request_id = 0;
  std::uint32_t php_api_version = 0;
  // Where the sections are said to lie, which is all that it takes: references are counted from
  // here. Any numbers, but a checkpoint at address 0 has no reference that an end could name.
  Reference orig_data = 0x1000'0000'0000;
  Reference orig_add_data = 0x2000'0000'0000;
  Limits limits = {};
};

// Two files, open for reading and writing, empty, in which the sections grow; borrowed. While the
// recording is under way they hold whole records and everything that these refer to.
struct SectionFiles {
  int data = -1;
  int add_data = -1;
  // Records are gathered in memory until they have so many bytes. What is still there is lost if
  // the process dies; with 0, nothing is.
  std::size_t buffer = std::size_t{64} << 10;
};

// The common fields of a record; each is there if it is set.
struct Timestamp {
  std::uint64_t seconds = 0;  // since 1970
  std::uint32_t nanoseconds = 0;
};
struct Location {
  Reference file = 0;  // of its name
  std::uint32_t line = 0;
};
struct Common {
  std::optional<Timestamp> timestamp = {};
  std::optional<std::uint64_t> memory = {};  // bytes in use
  std::optional<Location> location = {};
};

// What a descriptor says of a function or a class. References are of texts and of a class in the
// same trace, 0 for none.
struct FunctionInfo {
  std::uint8_t type = 1;  // Format::user_defined, or anything else for built in
  Reference name = 0;
  Reference class_entry = 0;
  std::uint32_t flags = 0;  // the engine's
  Reference file = 0;       // of user functions, as is the line
  std::uint32_t line = 0;
};
struct ClassInfo {
  std::uint8_t type = 1;
  Reference name = 0;
  std::uint32_t flags = 0;
  Reference file = 0;
  std::uint32_t line = 0;
};

}  // namespace CT::Write
