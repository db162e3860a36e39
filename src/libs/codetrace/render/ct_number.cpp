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

#include "codetrace/render/ct_digits.h"

namespace CT {

namespace {

// The longest shortest-digits text: sign, 17 digits, point, exponent of three digits.
constexpr std::size_t double_size = 32;
// Up to here every whole number is a double, and Qt prints it as an integer.
constexpr double exact_whole = 9007199254740992.0;

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
  // Rounded to a whole number that is near; only the exact one passes what follows.
  constexpr double half = 0.5;
  const auto millionths = static_cast<std::int64_t>(value * 1e6 + half);
  return static_cast<double>(millionths) / 1e6 == value ? static_cast<std::uint64_t>(millionths)
                                                        : 0;
}

// Whether the shortest digits are six or fewer, so that rounding to six changes nothing.
bool has_six_digits(std::uint64_t millionths) {
  while (millionths >= 1000000 && millionths % 10 == 0) millionths /= 10;
  return millionths < 1000000;
}

void put_short_decimal(Writer& out, std::uint64_t millionths) {
  char* at = write_decimal(out.room(double_size), millionths / 1000000);
  if (const auto rest = static_cast<std::uint32_t>(millionths % 1000000); rest != 0) {
    *at++ = '.';
    at = write_4_digits(write_2_digits(at, rest / 10000), rest % 10000);
    while (at[-1] == '0') --at;
  }
  out.advance(at);
}

}  // namespace

void put_signed(Writer& out, std::int64_t value) {
  out.advance(write_signed(out.room(double_size), value));
}

void put_unsigned(Writer& out, std::uint64_t value) {
  out.advance(write_decimal(out.room(double_size), value));
}

void put_pointer(Writer& out, std::uint64_t address) {
  out.advance(write_pointer(out.room(double_size), address));
}

void put_timestamp(Writer& out, const KTime::Timestamp& time) {
  out.advance(write_timestamp(out.room(double_size), time));
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

}  // namespace CT
