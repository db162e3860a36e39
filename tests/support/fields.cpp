// SPDX-License-Identifier: MIT
#include "fields.h"

#include <algorithm>
#include <bit>

namespace CT::Test {

Fields& Fields::number(std::uint64_t bits, std::size_t width) {
  numbers_.push_back({bytes_.size(), width});
  for (std::size_t i = 0; i < width; ++i) {
    bytes_ += static_cast<char>((bits >> (8 * i)) & 0xff);
  }
  return *this;
}

Fields& Fields::u8(std::uint8_t number) {
  bytes_ += static_cast<char>(number);
  return *this;
}

Fields& Fields::u32(std::uint32_t number) { return this->number(number, 4); }
Fields& Fields::i32(std::int32_t number) { return u32(static_cast<std::uint32_t>(number)); }
Fields& Fields::u64(std::uint64_t number) { return this->number(number, 8); }
Fields& Fields::f64(double number) { return u64(std::bit_cast<std::uint64_t>(number)); }

Fields& Fields::raw(std::string_view bytes) {
  bytes_ += bytes;
  return *this;
}

Fields& Fields::append(const Fields& other) {
  const std::size_t start = bytes_.size();
  const std::size_t count = other.numbers_.size();  // `other` may be this object
  for (std::size_t i = 0; i < count; ++i) {
    numbers_.push_back({start + other.numbers_[i].offset, other.numbers_[i].width});
  }
  bytes_ += other.bytes_;
  return *this;
}

Fields& Fields::cut_string(std::string_view text) {
  return u32(static_cast<std::uint32_t>(text.size())).raw(text);
}

Fields& Fields::cut_string(std::string_view text, std::uint32_t original_size) {
  return u32(0U - original_size).u32(static_cast<std::uint32_t>(text.size())).raw(text);
}

Fields& Fields::inline_text(std::string_view text) {
  u64(text.size());
  return text.empty() ? *this : raw(text).u8(0);
}

Fields& Fields::inline_text(std::uint64_t declared, std::string_view bytes) {
  return u64(declared).raw(bytes);
}

std::string Fields::encode(ByteOrder order) const {
  std::string bytes = bytes_;
  if (order == ByteOrder::little) return bytes;
  for (const Number& number : numbers_) {
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(number.offset);
    std::reverse(first, first + static_cast<std::ptrdiff_t>(number.width));
  }
  return bytes;
}

namespace value {

namespace {
Fields typed(std::uint8_t type) { return Fields().u8(type); }
}  // namespace

Fields undef() { return typed(0); }
Fields null() { return typed(1); }
Fields boolean(bool on) { return typed(on ? 3 : 2); }
Fields integer(std::int64_t number) { return typed(4).u64(static_cast<std::uint64_t>(number)); }
Fields real(double number) { return typed(5).f64(number); }
Fields string(std::string_view text) { return typed(6).cut_string(text); }
Fields cut_string(std::string_view text, std::uint32_t original_size) {
  return typed(6).cut_string(text, original_size);
}
Fields array_header(std::int32_t count) { return typed(7).i32(count); }

Fields list(const std::vector<Fields>& elements) {
  Fields result = array_header(static_cast<std::int32_t>(elements.size()));
  std::int64_t index = 0;
  for (const Fields& element : elements) result.append(integer(index++)).append(element);
  return result;
}

Fields map(const std::vector<Pair>& pairs) {
  return map(static_cast<std::int32_t>(pairs.size()), pairs);
}

Fields map(std::int32_t count, const std::vector<Pair>& pairs) {
  Fields result = array_header(count);
  for (const auto& [key, element] : pairs) result.append(key).append(element);
  return result;
}

Fields cut_marker() { return string("**CUT**"); }
Fields object(Ref class_entry, std::uint32_t handle) {
  return typed(8).u64(class_entry).u32(handle);
}
Fields resource(Ref type_name, std::uint64_t handle) { return typed(9).u64(type_name).u64(handle); }
Fields code(std::uint8_t type) { return typed(type); }

Fields nest(std::size_t depth, const Fields& leaf) {
  const Fields level = array_header(1).append(integer(0));
  Fields result;
  for (std::size_t i = 0; i < depth; ++i) result.append(level);
  return result.append(leaf);
}

}  // namespace value
}  // namespace CT::Test
