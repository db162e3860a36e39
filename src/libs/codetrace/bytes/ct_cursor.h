// SPDX-License-Identifier: MIT
//
// The only two ways to the bytes of a trace. `Cursor` reads fields one after the other out of a
// bounded range; `Section` turns the writer's addresses into places of a loaded section.
//
// Both borrow the bytes, which belong to CT::File and must outlive them. Bad data never moves them
// out of their range: a cursor that cannot read a field whole fails and stays failed, a reference
// that leads outside its section is a null pointer.
#pragma once

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>

#include "kcommon/k_export.h"

namespace CT {

// Reads integers in the writer's byte order. After a failed read every later read returns zero
// and the position stays at the start of the field that was not whole, so a decoder reads straight
// down and asks once.
class CODETRACE_EXPORT Cursor {
 public:
  // A cursor over nothing: every read fails.
  Cursor() = default;

  // Borrows: [begin, end). A range that ends before it begins is nothing.
  Cursor(const unsigned char* begin, const unsigned char* end, bool big_endian)
      : at_(begin),
        end_(end),
        swap_(big_endian != (std::endian::native == std::endian::big)),
        ok_(begin != nullptr && begin <= end) {}

  [[nodiscard]] bool ok() const { return ok_; }
  [[nodiscard]] const unsigned char* position() const { return at_; }
  [[nodiscard]] std::size_t left() const { return ok_ ? static_cast<std::size_t>(end_ - at_) : 0; }

  std::uint8_t u8() {
    const unsigned char* p = bytes(1);
    return p != nullptr ? *p : std::uint8_t{0};
  }
  std::uint32_t u32() { return read<std::uint32_t>(); }
  std::int32_t i32() { return static_cast<std::int32_t>(read<std::uint32_t>()); }
  std::uint64_t u64() { return read<std::uint64_t>(); }
  std::int64_t i64() { return static_cast<std::int64_t>(read<std::uint64_t>()); }

  // IEEE 754 binary64, stored as its bit pattern in the byte order of the integers.
  double f64() { return std::bit_cast<double>(read<std::uint64_t>()); }

  // Steps over `count` bytes and returns the first of them; null, and failed, if fewer are left.
  const unsigned char* bytes(std::size_t count) {
    if (!ok_ || count > static_cast<std::size_t>(end_ - at_)) {
      ok_ = false;
      return nullptr;
    }
    const unsigned char* first = at_;
    at_ += count;
    return first;
  }

 private:
  template <class Unsigned>
  Unsigned read() {
    const unsigned char* p = bytes(sizeof(Unsigned));
    if (p == nullptr) return 0;
    Unsigned value = 0;
    std::memcpy(&value, p, sizeof value);
    if (!swap_) return value;
    if constexpr (sizeof(Unsigned) == 4) {
      return __builtin_bswap32(value);
    } else {
      return __builtin_bswap64(value);
    }
  }

  const unsigned char* at_ = nullptr;
  const unsigned char* end_ = nullptr;
  bool swap_ = false;
  bool ok_ = false;
};

// One section of the file with the address at which it lay in the writer's memory. A reference is
// such an address; 0 refers to nothing. Differences are taken modulo 2^64.
class CODETRACE_EXPORT Section {
 public:
  Section() = default;

  // Borrows: `size` bytes at `data`; an empty section has a null pointer.
  Section(const unsigned char* data, std::uint64_t size, std::uint64_t origin)
      : data_(size != 0 ? data : nullptr), size_(size), origin_(origin) {}

  [[nodiscard]] const unsigned char* data() const { return data_; }
  [[nodiscard]] std::uint64_t size() const { return size_; }
  [[nodiscard]] std::uint64_t origin() const { return origin_; }
  [[nodiscard]] const unsigned char* end() const { return data_ + size_; }

  // The place that a reference means, with at least `need` bytes of the section from there on; null
  // for 0 and for a place that is not wholly inside.
  [[nodiscard]] const unsigned char* resolve(std::uint64_t reference,
                                             std::uint64_t need = 1) const {
    const std::uint64_t offset = reference - origin_;
    if (reference == 0 || offset >= size_ || size_ - offset < need) return nullptr;
    return data_ + offset;
  }

  // The relocated address as a number, for printing and comparing only: it may lie outside. 0 for a
  // reference of 0 and for an empty section.
  [[nodiscard]] std::uint64_t relocate(std::uint64_t reference) const {
    if (reference == 0 || data_ == nullptr) return 0;
    return std::bit_cast<std::uintptr_t>(data_) + (reference - origin_);
  }

  // The text from `place` to its NUL, or to the section's end if it has none.
  // Requires: a place inside the section, or null, which gives an empty view.
  [[nodiscard]] std::string_view text(const unsigned char* place) const {
    if (place == nullptr) return {};
    assert(contains(place));
    const auto room = static_cast<std::size_t>(end() - place);
    const void* nul = std::memchr(place, 0, room);
    const auto length =
        nul != nullptr ? static_cast<std::size_t>(static_cast<const unsigned char*>(nul) - place)
                       : room;
    return {as_chars(place), length};
  }

  // Whether a place is one of the section's bytes.
  [[nodiscard]] bool contains(const unsigned char* place) const {
    return std::greater_equal<>()(place, data_) && std::less<>()(place, end());
  }

  // The bytes as text.
  static const char* as_chars(const unsigned char* bytes) {
    return static_cast<const char*>(static_cast<const void*>(bytes));
  }

 private:
  const unsigned char* data_ = nullptr;
  std::uint64_t size_ = 0;
  std::uint64_t origin_ = 0;
};

}  // namespace CT
