// SPDX-License-Identifier: MIT
//
// Stored text taken apart into characters. Texts in a trace are meant to be UTF-8, but nobody
// vouches for that, so they are decoded by the rules of QString::fromUtf8: one leading byte-order
// mark is dropped, well-formed sequences are characters, and each byte that is part of none becomes
// one U+FFFD.
#pragma once

#include <cstddef>
#include <string_view>

namespace CT {

inline constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
inline constexpr std::string_view replacement_character = "\xEF\xBF\xBD";  // U+FFFD

// The length of the well-formed sequence (Unicode, table 3-7) at `p`, a byte of 0x80 or more that
// lies before `end`; 0 if there is none.
std::size_t utf8_sequence_length(const unsigned char* p, const unsigned char* end);

inline std::string_view without_byte_order_mark(std::string_view stored) {
  return stored.starts_with(byte_order_mark) ? stored.substr(byte_order_mark.size()) : stored;
}

// True when the decoded text is exactly `expected`, which is ASCII.
inline bool decodes_to(std::string_view stored, std::string_view expected) {
  return without_byte_order_mark(stored) == expected;
}

// Takes the first character off a stored text that is not empty and has no leading byte-order mark,
// and returns it decoded.
std::string_view take_character(std::string_view& stored);

}  // namespace CT
