// SPDX-License-Identifier: MIT
#include "ctredact/ct_decoded_text.h"

#include <array>
#include <optional>

#include "ctredact/ct_bytes.h"

namespace CT::Redact {

namespace {

// What an escape at a place means, and how many characters it has; none where there is no escape.
struct Unescaped {
  std::size_t size = 0;
  std::uint32_t code = 0;
  bool is_byte = true;  // else a code point
  bool is_nothing = false;
};

std::optional<std::uint32_t> hex_number(std::string_view text, std::size_t at, std::size_t digits) {
  if (text.size() < at + digits) return {};
  std::uint32_t number = 0;
  for (std::size_t i = at; i != at + digits; ++i) {
    const int value = hex_value(text[i]);
    if (value < 0) return {};
    number = number * 16 + static_cast<std::uint32_t>(value);
  }
  return number;
}

Unescaped percent(std::string_view text, std::size_t at) {
  if (text[at] == '+') return {1, ' '};
  const auto byte = hex_number(text, at + 1, 2);
  return byte ? Unescaped{3, *byte} : Unescaped{};
}

Unescaped unicode(std::string_view text, std::size_t at) {
  const auto first = hex_number(text, at + 2, 4);
  if (!first) return {};
  constexpr std::uint32_t high = 0xD800;
  constexpr std::uint32_t low = 0xDC00;
  constexpr std::uint32_t behind = 0xE000;
  if (*first >= high && *first < low && text.substr(at + 6, 2) == "\\u") {
    const auto second = hex_number(text, at + 8, 4);
    if (second && *second >= low && *second < behind) {
      return {12, 0x10000 + ((*first - high) << 10) + (*second - low), false};
    }
  }
  return {6, *first, false};
}

Unescaped backslash(std::string_view text, std::size_t at) {
  if (at + 1 == text.size()) return {};
  switch (text[at + 1]) {
    case 'n': return {2, '\n'};
    case 'r': return {2, '\r'};
    case 't': return {2, '\t'};
    case 'b': return {2, '\b'};
    case 'f': return {2, '\f'};
    case '0': return {2, 0};
    case 'u': return unicode(text, at);
    case 'x': {
      const auto byte = hex_number(text, at + 2, 2);
      return byte ? Unescaped{4, *byte} : Unescaped{};
    }
    default: return {2, static_cast<unsigned char>(text[at + 1])};
  }
}

Unescaped numbered_entity(std::string_view text, std::size_t at) {
  constexpr std::size_t most_digits = 7;
  const bool is_hex = at + 2 < text.size() && to_lower(text[at + 2]) == 'x';
  std::size_t i = at + (is_hex ? 3 : 2);
  const std::size_t first = i;
  std::uint32_t code = 0;
  for (; i < text.size() && i - first < most_digits; ++i) {
    const int digit = hex_value(text[i]);
    if (digit < 0 || (!is_hex && digit > 9)) break;
    code = code * (is_hex ? 16 : 10) + static_cast<std::uint32_t>(digit);
  }
  if (i == first || i == text.size() || text[i] != ';') return {};
  return {i + 1 - at, code, false};
}

Unescaped entity(std::string_view text, std::size_t at) {
  struct Name {
    std::string_view text;
    char character;
  };
  static constexpr std::array names = {Name{"&amp;", '&'},   Name{"&lt;", '<'},
                                       Name{"&gt;", '>'},    Name{"&quot;", '"'},
                                       Name{"&apos;", '\''}, Name{"&nbsp;", ' '}};
  if (text.substr(at, 2) == "&#") return numbered_entity(text, at);
  for (const Name& name : names) {
    if (text.substr(at, name.text.size()) == name.text) {
      return {name.text.size(), static_cast<unsigned char>(name.character)};
    }
  }
  return {};
}

Unescaped quoted_printable(std::string_view text, std::size_t at) {
  if (text.substr(at + 1, 2) == "\r\n") return {3, 0, true, true};
  if (text.substr(at + 1, 1) == "\n") return {2, 0, true, true};
  const auto byte = hex_number(text, at + 1, 2);
  return byte ? Unescaped{3, *byte} : Unescaped{};
}

struct Encoding {
  std::string_view marks;  // that escapes begin with
  Unescaped (*read)(std::string_view text, std::size_t at);
};
constexpr std::array<Encoding, escape_count> encodings = {
    Encoding{"%+", percent}, Encoding{"\\", backslash}, Encoding{"&", entity},
    Encoding{"=", quoted_printable}};

}  // namespace

void DecodedText::clear() {
  bytes.clear();
  begins.clear();
  ends.clear();
}

void DecodedText::put_character(std::uint32_t code, std::size_t begin, std::size_t end) {
  const auto put_bits = [&](std::uint32_t lead, int shift) {
    put(static_cast<char>(lead | (code >> shift)), begin, end);
    for (shift -= 6; shift >= 0; shift -= 6) {
      put(static_cast<char>(0x80 | ((code >> shift) & 0x3F)), begin, end);
    }
  };
  if (code < 0x80) return put(static_cast<char>(code), begin, end);
  if (code < 0x800) return put_bits(0xC0, 6);
  if (code < 0x10000) return put_bits(0xE0, 12);
  put_bits(0xF0, 18);
}

unsigned escapes_in(std::string_view text) {
  static constexpr auto bits = [] {
    std::array<std::uint8_t, 256> made{};
    for (std::size_t i = 0; i != encodings.size(); ++i) {
      for (const char c : encodings[i].marks) {
        made[static_cast<unsigned char>(c)] |= static_cast<std::uint8_t>(1U << i);
      }
    }
    return made;
  }();
  unsigned found = 0;
  for (const char c : text) found |= bits[static_cast<unsigned char>(c)];
  return found;
}

void undo(std::string_view text, Escape escape, DecodedText& out) {
  out.clear();
  const Encoding& encoding = encodings[static_cast<std::size_t>(escape)];
  for (std::size_t at = 0; at != text.size();) {
    Unescaped here;
    if (encoding.marks.find(text[at]) != std::string_view::npos) here = encoding.read(text, at);
    const std::size_t end = at + (here.size != 0 ? here.size : 1);
    if (here.size == 0) {
      out.put(text[at], at, end);
    } else if (here.is_byte && !here.is_nothing) {
      out.put(static_cast<char>(here.code), at, end);
    } else if (!here.is_byte) {
      out.put_character(here.code & 0x1FFFFF, at, end);
    }
    at = end;
  }
}

std::string undone(std::string_view text, Escape escape) {
  DecodedText decoded;
  undo(text, escape, decoded);
  return std::move(decoded.bytes);
}

Base64Run base64_run(std::string_view text, std::size_t begin) {
  Base64Run run{begin, begin, 0};
  std::size_t i = begin;
  while (i != text.size()) {
    if (base64_value(text[i]) >= 0) {
      ++run.characters;
      run.end = ++i;
      continue;
    }
    // The end of a line, if more of it follows on the next.
    const std::size_t next = i + (text.substr(i, 2) == "\r\n" ? 2 : text[i] == '\n' ? 1 : 0);
    if (next == i || next >= text.size() || base64_value(text[next]) < 0) break;
    i = next;
  }
  return run;
}

void decode(std::string_view text, const Base64Run& run, std::size_t skipped, DecodedText& out) {
  out.clear();
  std::uint32_t bits = 0;
  int have = 0;            // bits that are no whole byte yet
  std::size_t before = 0;  // where the character stands that they are of
  for (std::size_t i = run.begin; i != run.end; ++i) {
    const int value = base64_value(text[i]);
    if (value < 0) continue;
    if (skipped != 0) {
      --skipped;
      continue;
    }
    bits = ((bits << 6) | static_cast<std::uint32_t>(value)) & 0xFFFF;
    have += 6;
    if (have >= 8) {
      have -= 8;
      out.put(static_cast<char>((bits >> have) & 0xFF), before, i + 1);
    }
    before = i;
  }
}

}  // namespace CT::Redact
