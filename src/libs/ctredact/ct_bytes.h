// SPDX-License-Identifier: MIT
//
// What kind of character a byte is, whatever the locale says. Bytes above 127 are none of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace CT::Redact {

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_lower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool is_upper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool is_alpha(char c) { return is_lower(c) || is_upper(c); }
constexpr bool is_alnum(char c) { return is_alpha(c) || is_digit(c); }
constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }
constexpr bool is_space(char c) { return is_blank(c) || c == '\n' || c == '\r'; }
constexpr char to_lower(char c) { return is_upper(c) ? static_cast<char>(c + ('a' - 'A')) : c; }

// Of a digit in base 16, in either case; -1 for what is none.
constexpr int hex_value(char c) {
  if (is_digit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The six bits of a character of base64, of the usual and of the alphabet for URLs; -1 for others.
inline constexpr auto base64_values = [] {
  std::array<std::int8_t, 256> values{};
  for (auto& value : values) value = -1;
  constexpr std::string_view usual =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (std::size_t i = 0; i != usual.size(); ++i) {
    values[static_cast<unsigned char>(usual[i])] = static_cast<std::int8_t>(i);
  }
  values['-'] = values['+'];
  values['_'] = values['/'];
  return values;
}();
constexpr int base64_value(char c) { return base64_values[static_cast<unsigned char>(c)]; }

inline std::string in_small_letters(std::string_view text) {
  std::string small(text);
  for (char& c : small) c = to_lower(c);
  return small;
}

}  // namespace CT::Redact
