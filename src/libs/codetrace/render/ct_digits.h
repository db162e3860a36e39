// SPDX-License-Identifier: MIT
//
// Integers written in place, for whoever writes a line as one block: each function writes to `at`
// and returns the end of what it wrote. There must be room for the longest text, whose size is said
// with each.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kcommon/k_timestamp.h"

namespace CT {

// Two decimal digits for each number below 100.
inline constexpr auto digit_pairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i != 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Two hexadecimal digits for each byte.
inline constexpr auto hex_pairs = [] {
  constexpr std::string_view digits = "0123456789abcdef";
  std::array<char, 512> pairs{};
  for (std::size_t i = 0; i != 256; ++i) {
    pairs[2 * i] = digits[i / 16];
    pairs[2 * i + 1] = digits[i % 16];
  }
  return pairs;
}();

// Exactly two digits of a number below 100, four of one below 10,000, eight of one below 10^8.
inline char* write_2_digits(char* at, std::uint32_t value) {
  std::memcpy(at, &digit_pairs[std::size_t{2} * value], 2);
  return at + 2;
}
inline char* write_4_digits(char* at, std::uint32_t value) {
  return write_2_digits(write_2_digits(at, value / 100), value % 100);
}
inline char* write_8_digits(char* at, std::uint32_t value) {
  return write_4_digits(write_4_digits(at, value / 10'000), value % 10'000);
}

// Up to four digits, of a number below 10,000; up to eight, of one below 10^8.
inline char* write_short(char* at, std::uint32_t value) {
  const std::uint32_t lead = value < 100 ? value : value / 100;
  if (lead < 10) {
    *at++ = static_cast<char>('0' + lead);
  } else {
    at = write_2_digits(at, lead);
  }
  return value < 100 ? at : write_2_digits(at, value % 100);
}
inline char* write_middle(char* at, std::uint32_t value) {
  if (value < 10'000) return write_short(at, value);
  return write_4_digits(write_short(at, value / 10'000), value % 10'000);
}

// Up to 20 digits.
inline char* write_decimal(char* at, std::uint64_t value) {
  constexpr std::uint32_t unit = 100'000'000;
  if (value < unit) return write_middle(at, static_cast<std::uint32_t>(value));
  const std::uint64_t lead = value / unit;
  if (lead < unit) {
    at = write_middle(at, static_cast<std::uint32_t>(lead));
  } else {
    at = write_middle(at, static_cast<std::uint32_t>(lead / unit));
    at = write_8_digits(at, static_cast<std::uint32_t>(lead % unit));
  }
  return write_8_digits(at, static_cast<std::uint32_t>(value % unit));
}

// The same with a minus sign before a negative number: up to 20 bytes.
inline char* write_signed(char* at, std::int64_t value) {
  auto magnitude = static_cast<std::uint64_t>(value);
  if (value < 0) {
    *at++ = '-';
    magnitude = 0 - magnitude;
  }
  return write_decimal(at, magnitude);
}

// As QTextStream prints a `const void *`: "0x" and lower-case hexadecimal digits, "0x0" for null.
// Up to 18 bytes.
inline char* write_pointer(char* at, std::uint64_t address) {
  *at++ = '0';
  *at++ = 'x';
  char* const end = at + (address != 0 ? (std::bit_width(address) + 3) / 4 : 1);
  char* p = end;
  for (; p - at >= 2; address >>= 8) {
    p -= 2;
    std::memcpy(p, &hex_pairs[2 * (address & 0xFF)], 2);
  }
  if (p != at) *at = hex_pairs[2 * address + 1];
  return end;
}

// "{seconds}.{microseconds}" with at least six characters of microseconds, rounded half up. Up to
// 29 bytes.
inline char* write_timestamp(char* at, const KTime::Timestamp& time) {
  constexpr std::int32_t second = 1'000'000;
  at = write_signed(at, time.seconds);
  *at++ = '.';
  const auto nanos = static_cast<std::int32_t>(time.nanoseconds);
  // Kept: the carry does not reach the seconds, so 999999500 ns and more print as 1000000.
  const std::int32_t micros = nanos / 1000 + (nanos % 1000 >= 500 ? 1 : 0);
  if (micros >= 0 && micros < second) {
    const auto digits = static_cast<std::uint32_t>(micros);
    return write_4_digits(write_2_digits(at, digits / 10'000), digits % 10'000);
  }
  // Out of range: as many digits as it has, five at least behind a sign.
  if (micros < 0) *at++ = '-';
  const std::int32_t magnitude = micros < 0 ? -micros : micros;
  for (std::int32_t unit = 10'000; unit > 1 && magnitude < unit; unit /= 10) *at++ = '0';
  return write_decimal(at, static_cast<std::uint32_t>(magnitude));
}

}  // namespace CT
