// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_number.h"

#include <QString>
#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>
#include <system_error>

namespace CT {

namespace {

// The longest shortest-digits text: sign, 17 digits, point, exponent of three digits.
constexpr std::size_t double_size = 32;
// Up to here every whole number is a double, and Qt prints it as an integer.
constexpr double exact_whole = 9007199254740992.0;

// Two decimal digits for each number below 100.
constexpr auto digit_pairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i != 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Two hexadecimal digits for each byte.
constexpr auto hex_pairs = [] {
  constexpr std::string_view digits = "0123456789abcdef";
  std::array<char, 512> pairs{};
  for (std::size_t i = 0; i != 256; ++i) {
    pairs[2 * i] = digits[i / 16];
    pairs[2 * i + 1] = digits[i % 16];
  }
  return pairs;
}();

// Writes the digits that end at `end`, by pairs; returns their begin.
char* write_digits_before(char* end, std::uint64_t value) {
  while (value >= 100) {
    end -= 2;
    std::memcpy(end, &digit_pairs[2 * (value % 100)], 2);
    value /= 100;
  }
  if (value < 10) {
    *--end = static_cast<char>('0' + value);
    return end;
  }
  end -= 2;
  std::memcpy(end, &digit_pairs[2 * value], 2);
  return end;
}

// Writes to `at`, where there is room for 20 digits; returns the end.
char* write_decimal(char* at, std::uint64_t value) {
  if (value < 10) {
    *at = static_cast<char>('0' + value);
    return at + 1;
  }
  // Copied as a block of fixed size: what is behind the digits is written over later.
  constexpr std::size_t block = 20;
  char digits[2 * block];
  const char* begin = write_digits_before(digits + block, value);
  std::memcpy(at, begin, block);
  return at + (digits + block - begin);
}

template <class Value, class... Form>
void put_chars(Writer& out, Value value, Form... form) {
  char* room = out.room(2 * double_size);
  out.advance(std::to_chars(room, room + 2 * double_size, value, form...).ptr);
}

// The shortest digits of a finite value, without sign and point, and the decimal exponent of the
// first one.
struct Digits {
  explicit Digits(double magnitude) {
    char buffer[double_size];
    const char* end =
        std::to_chars(buffer, buffer + double_size, magnitude, std::chars_format::scientific).ptr;
    const char* p = buffer;
    for (; *p != 'e'; ++p) {
      if (*p != '.') text[count++] = *p;
    }
    ++p;
    if (*p == '+') ++p;
    std::from_chars(p, end, exponent);
  }

  char text[double_size];
  std::size_t count = 0;
  int exponent = 0;
};

// Whole numbers above 2^53: the shortest digits padded with zeros, unless the exponent form is
// shorter.
void put_large_whole(Writer& out, double value) {
  const Digits digits(std::abs(value));
  const auto decimal = static_cast<std::size_t>(digits.exponent) + 1;
  const std::size_t point = digits.count > 1 ? 1 : 0;
  const std::size_t exponent = digits.exponent < 100 ? 4 : 5;
  if (decimal > digits.count + point + exponent) {
    put_chars(out, value, std::chars_format::scientific);
    return;
  }
  if (value < 0) out.put('-');
  out.put(std::string_view(digits.text, digits.count));
  out.fill('0', decimal - digits.count);
}

// A value with at most six decimals and fifteen digits, which most times and sizes are: finding its
// shortest digits is much cheaper this way. 0 for a value that is not of that kind, else its
// millionths.
std::uint64_t short_decimal(double value) {
  if (!(value >= 0.001 && value < 1e9)) return 0;
  const long long millionths = std::llround(value * 1e6);
  return static_cast<double>(millionths) / 1e6 == value ? static_cast<std::uint64_t>(millionths)
                                                        : 0;
}

// Whether the shortest digits are six or fewer, so that rounding to six changes nothing.
bool has_six_digits(std::uint64_t millionths) {
  while (millionths >= 1000000 && millionths % 10 == 0) millionths /= 10;
  return millionths < 1000000;
}

void put_short_decimal(Writer& out, std::uint64_t millionths) {
  put_unsigned(out, millionths / 1000000);
  auto rest = static_cast<unsigned>(millionths % 1000000);
  if (rest == 0) return;
  char* room = out.room(7);
  char* end = room;
  *end++ = '.';
  for (unsigned unit = 100000; rest != 0; unit /= 10) {
    *end++ = static_cast<char>('0' + rest / unit);
    rest %= unit;
  }
  out.advance(end);
}

}  // namespace

void put_signed(Writer& out, std::int64_t value) {
  char* at = out.room(double_size);
  auto magnitude = static_cast<std::uint64_t>(value);
  if (value < 0) {
    *at++ = '-';
    magnitude = 0 - magnitude;
  }
  out.advance(write_decimal(at, magnitude));
}

void put_unsigned(Writer& out, std::uint64_t value) {
  out.advance(write_decimal(out.room(double_size), value));
}

void put_pointer(Writer& out, std::uint64_t address) {
  char* at = out.room(double_size);
  *at++ = '0';
  *at++ = 'x';
  constexpr std::size_t block = 16;
  char digits[2 * block];
  char* begin = digits + block;
  do {
    begin -= 2;
    std::memcpy(begin, &hex_pairs[2 * (address & 0xFF)], 2);
    address >>= 8;
  } while (address != 0);
  if (*begin == '0' && begin + 1 != digits + block) ++begin;
  std::memcpy(at, begin, block);
  out.advance(at + (digits + block - begin));
}

void put_double_text(Writer& out, double value) {
  if (std::isnan(value)) {
    out.put("nan");
  } else if (value == 0) {
    out.put('0');
  } else if (std::isinf(value)) {
    put_chars(out, value);
  } else if (const std::uint64_t millionths = short_decimal(value);
             millionths != 0 && value < 1e6 && has_six_digits(millionths)) {
    put_short_decimal(out, millionths);
  } else if (const Digits digits(std::abs(value)); digits.count == 7 && digits.text[6] == '5') {
    // May be an exact tie, which Qt rounds away from zero and to_chars to even.
    out.put(std::string_view(QString::number(value, 'g', 6).toStdString()));
  } else {
    put_chars(out, value, std::chars_format::general, 6);
  }
}

void put_double_json(Writer& out, double value) {
  if (!std::isfinite(value)) {
    out.put("null");
  } else if (std::abs(value) > exact_whole) {
    put_large_whole(out, value);
  } else if (std::trunc(value) == value) {
    put_signed(out, static_cast<std::int64_t>(value));
  } else if (const std::uint64_t millionths = short_decimal(value); millionths != 0) {
    put_short_decimal(out, millionths);
  } else {
    put_chars(out, value);
  }
}

void put_timestamp(Writer& out, KTime::Timestamp time) {
  put_signed(out, time.seconds);
  const auto nanos = static_cast<std::int32_t>(time.nanoseconds);
  // Kept: the carry does not reach the seconds, so 999999500 ns and more print as 1000000.
  std::int32_t micros = nanos / 1000 + (nanos % 1000 >= 500 ? 1 : 0);
  std::ptrdiff_t width = 6;
  char* at = out.room(double_size);
  *at++ = '.';
  if (micros < 0) {
    *at++ = '-';
    micros = -micros;
    --width;
  }
  constexpr std::size_t block = 16;
  char digits[2 * block];
  char* const end = digits + block;
  char* begin = write_digits_before(end, static_cast<std::uint64_t>(micros));
  while (end - begin < width) *--begin = '0';
  std::memcpy(at, begin, block);
  out.advance(at + (end - begin));
}

}  // namespace CT
