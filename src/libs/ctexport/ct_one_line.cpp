// SPDX-License-Identifier: MIT
#include "ctexport/ct_one_line.h"

#include <algorithm>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_digits.h"
#include "codetrace/render/ct_text.h"

namespace CT::Export {

namespace {

constexpr unsigned char first_printable = 0x20;
constexpr unsigned char delete_character = 0x7F;

void put_hex(Writer& out, unsigned char byte) {
  out.put(std::string_view(&hex_pairs[std::size_t{2} * byte], 2));
}

// A control character of ASCII, or one of the two bytes of U+0080 to U+009F.
void put_control(Writer& out, unsigned char c) {
  switch (c) {
    case '\n': out.put("\\n"); break;
    case '\r': out.put("\\r"); break;
    case '\t': out.put("\\t"); break;
    default: out.put("\\x"); put_hex(out, c);
  }
}

// U+0080 to U+009F, among which is a line end.
bool is_late_control(std::string_view character) {
  return character.size() == 2 && character[0] == '\xC2' &&
         static_cast<unsigned char>(character[1]) < 0xA0;
}

// U+2028 and U+2029.
bool is_separator(std::string_view character) {
  return character == "\xE2\x80\xA8" || character == "\xE2\x80\xA9";
}

bool is_plain(unsigned char c, char replaced) {
  return c >= first_printable && c < delete_character && c != static_cast<unsigned char>(replaced);
}

void put_escaped(Writer& out, std::string_view stored, char replaced, char by) {
  stored = without_byte_order_mark(stored);
  while (!stored.empty() && out.ok()) {
    const auto* const end = std::find_if(stored.begin(), stored.end(), [&](char c) {
      return !is_plain(static_cast<unsigned char>(c), replaced);
    });
    const auto plain = static_cast<std::size_t>(end - stored.begin());
    out.put(stored.substr(0, plain));
    stored.remove_prefix(plain);
    if (stored.empty()) return;
    const std::string_view character = take_character(stored);
    const auto first = static_cast<unsigned char>(character.front());
    if (character.size() == 1) {
      character.front() == replaced ? out.put(by) : put_control(out, first);
    } else if (is_late_control(character)) {
      put_control(out, static_cast<unsigned char>(character[1]));
    } else if (is_separator(character)) {
      out.put(character.back() == '\xA8' ? "\\u2028" : "\\u2029");
    } else {
      out.put(character);
    }
  }
}

}  // namespace

void put_one_line(Writer& out, std::string_view stored) { put_escaped(out, stored, ';', ';'); }

void put_one_frame(Writer& out, std::string_view stored) { put_escaped(out, stored, ';', ':'); }

std::size_t whole_characters(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text.size();
  constexpr std::size_t longest = 4;
  std::size_t size = most;
  while (size != 0 && most - size < longest &&
         (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) {
    --size;
  }
  return size;
}

}  // namespace CT::Export
