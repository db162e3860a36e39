// SPDX-License-Identifier: MIT
//
// Fields: a run of bytes of a trace in which the numbers are marked, so that it can be written in
// either byte order. Values of the traced script are Fields too; the functions of namespace
// `value` make them. Nothing here knows the library under test, and nothing checks that the bytes
// make sense: a test may write any nonsense it likes. No function recurses, so a value can be
// nested as deep as memory allows (`value::nest`).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace CT::Test {

enum class ByteOrder { little, big };

// An address in the writer's memory, as stored in the file; 0 means none.
using Ref = std::uint64_t;

class Fields {
 public:
  // Each appends and returns this object.
  Fields& u8(std::uint8_t number);
  Fields& u32(std::uint32_t number);
  Fields& i32(std::int32_t number);
  Fields& u64(std::uint64_t number);
  Fields& f64(double number);
  Fields& raw(std::string_view bytes);  // never swapped
  Fields& append(const Fields& other);

  // A cut string that holds all of its text: length, bytes.
  Fields& cut_string(std::string_view text);
  // A cut string of which `text` was kept: -original size, stored length, bytes.
  Fields& cut_string(std::string_view text, std::uint32_t original_size);
  // An inline text: its length, then text and NUL unless it is empty.
  Fields& inline_text(std::string_view text);
  // An inline text whose length field says `declared`; `bytes` follow as they stand.
  Fields& inline_text(std::uint64_t declared, std::string_view bytes);

  std::size_t size() const { return bytes_.size(); }
  bool empty() const { return bytes_.empty(); }
  std::string encode(ByteOrder order) const;

 private:
  struct Number {
    std::size_t offset;
    std::size_t width;
  };
  Fields& number(std::uint64_t bits, std::size_t width);

  std::string bytes_;  // numbers little-endian
  std::vector<Number> numbers_;
};

// Values of the traced script: a type byte and its payload.
namespace value {

using Pair = std::pair<Fields, Fields>;

Fields undef();
Fields null();
Fields boolean(bool on);
Fields integer(std::int64_t number);
Fields real(double number);
Fields string(std::string_view text);
Fields cut_string(std::string_view text, std::uint32_t original_size);
// The array's type byte and count alone; the caller appends the pairs.
Fields array_header(std::int32_t count);
Fields list(const std::vector<Fields>& elements);
Fields map(const std::vector<Pair>& pairs);
// As `map`, with a count of the caller's choice.
Fields map(std::int32_t count, const std::vector<Pair>& pairs);
// The key that tells that the tracer cut the array here; as an element, that it did not descend.
Fields cut_marker();
Fields object(Ref class_entry, std::uint32_t handle);
Fields resource(Ref type_name, std::uint64_t handle);
// A lone type byte, for codes that no value has.
Fields code(std::uint8_t type);
// `leaf` inside `depth` lists of one element.
Fields nest(std::size_t depth, const Fields& leaf);

}  // namespace value
}  // namespace CT::Test
