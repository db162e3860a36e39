// SPDX-License-Identifier: MIT
//
// Texts as they are behind an encoding, with the place that each byte has in the text itself. So
// one secret is found in every spelling of an encoding: `%2f`, `%2F`, `\/` and `\u002f` are one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace CT::Redact {

// Borrows nothing. Byte i stands for [begins[i], ends[i]) of the text that it was made of; in
// base64 neighbours share characters.
struct DecodedText {
  std::string bytes;
  std::vector<std::uint32_t> begins;
  std::vector<std::uint32_t> ends;

  void clear();
  void put(char byte, std::size_t begin, std::size_t end) {
    bytes += byte;
    begins.push_back(static_cast<std::uint32_t>(begin));
    ends.push_back(static_cast<std::uint32_t>(end));
  }
  // A code point as UTF-8, all of its bytes for the same characters.
  void put_character(std::uint32_t code, std::size_t begin, std::size_t end);
};

// The encodings that are undone character by character. What is no escape stands for itself.
enum class Escape : std::uint8_t {
  percent,           // %41, and + for a blank: URLs, forms
  backslash,         // \n \/ \" \' \\ \u0041 \ud83d\ude00 \x41: JSON, and strings of PHP and SQL
  entity,            // &amp; &quot; &#39; &#x27;: HTML
  quoted_printable,  // =41, and = at the end of a line: mail
};
inline constexpr int escape_count = 4;

// Which encodings there may be something to undo of, as bits: bytes that their escapes begin with
// are there.
unsigned escapes_in(std::string_view text);
inline bool has_escape(std::string_view text, Escape escape) {
  return (escapes_in(text) >> static_cast<unsigned>(escape) & 1U) != 0;
}
// Undoes one encoding. `out` is emptied first.
void undo(std::string_view text, Escape escape, DecodedText& out);
std::string undone(std::string_view text, Escape escape);

// Characters that may be base64, of both alphabets, as `text` has them from `begin` on; they may be
// broken into lines. Empty if no such run begins there.
struct Base64Run {
  std::size_t begin = 0;
  std::size_t end = 0;         // behind the last of them
  std::size_t characters = 0;  // without line ends
};
Base64Run base64_run(std::string_view text, std::size_t begin);
// The bytes of a run if `skipped` of its characters (0 to 3) come before the first group of four.
// `out` is emptied first.
void decode(std::string_view text, const Base64Run& run, std::size_t skipped, DecodedText& out);

}  // namespace CT::Redact
