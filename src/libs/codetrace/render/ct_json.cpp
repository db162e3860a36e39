// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_json.h"

#include <algorithm>

#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_text.h"

namespace CT {

void JsonWriter::begin(char bracket) {
  out_.put(bracket);
  ++depth_;
  first_ = true;
}

void JsonWriter::end(char bracket) {
  --depth_;
  if (indented_) new_line();
  out_.put(bracket);
  first_ = false;
}

// The usual few levels are copied as one block of fixed size; the rest of it is written over.
void JsonWriter::new_line() {
  constexpr std::size_t usual = 32;
  const std::size_t blanks = 4 * depth_;
  char* room = out_.room(1 + usual);
  *room = '\n';
  if (blanks > usual) {
    out_.advance(room + 1);
    out_.fill(' ', blanks);
    return;
  }
  std::memset(room + 1, ' ', usual);
  out_.advance(room + 1 + blanks);
}

void JsonWriter::element() {
  if (!first_) out_.put(',');
  first_ = false;
  if (indented_) new_line();
}

void JsonWriter::key(std::string_view name) {
  begin_key();
  out_.put(name);
  end_key();
}

void JsonWriter::begin_key() {
  element();
  out_.put('"');
}

void JsonWriter::end_key() { indented_ ? out_.put("\": ") : out_.put("\":"); }

void JsonWriter::number(std::int64_t value) { put_signed(out_, value); }

void JsonWriter::number(double value) { put_double_json(out_, value); }

void JsonWriter::text(std::string_view stored, std::string_view suffix) {
  out_.put('"');
  put_json_text(out_, stored);
  out_.put(suffix);
  out_.put('"');
}

bool json_key_less(std::string_view a, std::string_view b) {
  const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  if (x == a.end() || y == b.end()) return y != b.end();
  const auto left = static_cast<unsigned char>(*x);
  const auto right = static_cast<unsigned char>(*y);
  // Surrogates (lead bytes F0 to F4) sort before U+E000 to U+FFFF (lead bytes EE and EF).
  constexpr unsigned char first_above_surrogates = 0xEE;
  constexpr unsigned char first_beyond_bmp = 0xF0;
  if (left >= first_above_surrogates && right >= first_above_surrogates &&
      (left >= first_beyond_bmp) != (right >= first_beyond_bmp)) {
    return left >= first_beyond_bmp;
  }
  return left < right;
}

}  // namespace CT
