// SPDX-License-Identifier: MIT
//
// Bytes: a little-endian run of bytes that grows to megabytes quickly, for payloads with too many
// fields to mark each of them. It knows the codes of the values that the worst cases are made of.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "fields.h"

namespace CT::Bench {

class Bytes {
 public:
  Bytes& u8(std::uint8_t number) {
    bytes_.push_back(static_cast<char>(number));
    return *this;
  }
  Bytes& u32(std::uint32_t number) { return number_of(number, 4); }
  Bytes& u64(std::uint64_t number) { return number_of(number, 8); }
  Bytes& raw(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
  }

  // Values.
  Bytes& undef() { return u8(0); }
  Bytes& null() { return u8(1); }
  Bytes& integer(std::uint64_t number) { return u8(4).u64(number); }
  Bytes& real(std::uint64_t bits) { return u8(5).u64(bits); }
  Bytes& string(std::string_view text) {
    return u8(6).u32(static_cast<std::uint32_t>(text.size())).raw(text);
  }
  // The pairs follow.
  Bytes& array(std::size_t count) { return u8(7).u32(static_cast<std::uint32_t>(count)); }
  Bytes& object(Test::Ref class_entry, std::uint32_t handle) {
    return u8(8).u64(class_entry).u32(handle);
  }
  Bytes& resource(Test::Ref type_name, std::uint64_t handle) {
    return u8(9).u64(type_name).u64(handle);
  }

  [[nodiscard]] Test::Fields fields() const { return Test::Fields().raw(bytes_); }

 private:
  Bytes& number_of(std::uint64_t number, int width) {
    for (int i = 0; i != width; ++i) u8(static_cast<std::uint8_t>(number >> (8 * i)));
    return *this;
  }

  std::string bytes_;
};

}  // namespace CT::Bench
