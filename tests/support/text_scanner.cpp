// SPDX-License-Identifier: MIT
#include "text_scanner.h"

#include <algorithm>
#include <charconv>

namespace CT::Test {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_word_start(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool is_word(char c) { return is_word_start(c) || is_digit(c); }

int hex_digit(char c) {
  if (is_digit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

void TextScanner::fail(const std::string& message) const { throw TextError(line_, message); }

void TextScanner::skip(std::size_t count) {
  for (std::size_t i = 0; i < count && pos_ < text_.size(); ++i) {
    if (text_[pos_++] == '\n') ++line_;
  }
}

char TextScanner::next() {
  while (pos_ < text_.size()) {
    const char c = text_[pos_];
    if (c == '#') {
      pos_ = std::min(text_.find('\n', pos_), text_.size());
    } else if (c == ' ' || c == '\t' || (c == '\n' && depth_ > 0)) {
      skip(1);
    } else {
      return c;
    }
  }
  return '\n';
}

bool TextScanner::at_end() {
  while (next() == '\n' && pos_ < text_.size()) skip(1);
  return pos_ >= text_.size();
}

bool TextScanner::at_end_of_line() { return next() == '\n'; }

void TextScanner::expect_end_of_line() {
  if (depth_ > 0 && at_end()) fail("a bracket is not closed");
  if (!at_end_of_line()) {
    fail("unexpected '" + std::string(at_word() ? peek_word() : text_.substr(pos_, 1)) + "'");
  }
}

bool TextScanner::accept(std::string_view mark) {
  next();
  if (text_.substr(pos_, mark.size()) != mark) return false;
  skip(mark.size());
  if (mark == "[" || mark == "(") ++depth_;
  if (mark == "]" || mark == ")") --depth_;
  return true;
}

void TextScanner::expect(std::string_view mark) {
  if (!accept(mark)) fail("expected '" + std::string(mark) + "'");
}

std::string_view TextScanner::peek_word() {
  if (!is_word_start(next())) return {};
  const auto rest = text_.substr(pos_);
  const auto end = std::find_if_not(rest.begin(), rest.end(), is_word);
  return rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
}

bool TextScanner::at_word() { return is_word_start(next()); }

bool TextScanner::at_number() { return at_digit() || (next() == '-' && is_digit(peek(1))); }

bool TextScanner::accept_word(std::string_view word) {
  if (peek_word() != word) return false;
  skip(word.size());
  return true;
}

void TextScanner::expect_word(std::string_view word) {
  if (!accept_word(word)) fail("expected '" + std::string(word) + "'");
}

bool TextScanner::accept_label(std::string& label) {
  const std::string_view word = peek_word();
  if (word.empty() || peek(word.size()) != ':') return false;
  label = word;
  skip(word.size() + 1);
  return true;
}

std::string TextScanner::word(std::string_view what) {
  const std::string result(peek_word());
  if (result.empty()) fail("expected " + std::string(what));
  skip(result.size());
  return result;
}

char TextScanner::escaped() {
  const char c = peek();
  skip(1);
  switch (c) {
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case '0': return '\0';
    case '\\':
    case '"': return c;
    case 'x': break;
    default: fail(std::string("unknown escape '\\") + c + "' in a string");
  }
  const int high = hex_digit(peek());
  const int low = hex_digit(peek(1));
  if (high < 0 || low < 0) fail("'\\x' needs two hex digits");
  skip(2);
  return static_cast<char>(high * 16 + low);
}

std::string TextScanner::string() {
  if (next() != '"') fail("expected a string");
  skip(1);
  std::string result;
  while (peek() != '"') {
    if (peek() == '\n') fail("a string is not closed");
    const char c = peek();
    skip(1);
    result += c == '\\' ? escaped() : c;
  }
  skip(1);
  return result;
}

std::string TextScanner::digits() {
  next();
  std::string result;
  for (; is_digit(peek()); skip(1)) result += peek();
  if (result.empty()) fail("expected a number");
  return result;
}

std::uint64_t TextScanner::number(std::uint64_t largest) {
  next();
  const bool hex = peek() == '0' && peek(1) == 'x';
  if (hex) skip(2);
  const char* const begin = text_.data() + pos_;
  std::uint64_t result = 0;
  const auto [end, error] =
      std::from_chars(begin, text_.data() + text_.size(), result, hex ? 16 : 10);
  if (error == std::errc::invalid_argument) fail("expected a number");
  if (error != std::errc() || result > largest) fail("the number is too large");
  skip(static_cast<std::size_t>(end - begin));
  if (is_word(peek())) fail("a number is followed by a letter");
  return result;
}

std::string TextScanner::number_text() {
  next();
  std::string result;
  const auto belongs = [&](char c) {
    const bool sign = c == '-' || c == '+';
    const bool after_exponent = !result.empty() && result.back() == 'e';
    return is_digit(c) || c == '.' || c == 'e' || (sign && (result.empty() || after_exponent));
  };
  for (; belongs(peek()); skip(1)) result += peek();
  return result;
}

std::string TextScanner::run() {
  std::string result;
  for (next(); peek() != ' ' && peek() != '\t' && peek() != '\n'; skip(1)) result += peek();
  return result;
}

std::string TextScanner::hex_bytes() {
  std::string result;
  while (hex_digit(next()) >= 0) {
    const int low = hex_digit(peek(1));
    if (low < 0) fail("a byte needs two hex digits");
    result += static_cast<char>(hex_digit(peek()) * 16 + low);
    skip(2);
  }
  return result;
}

}  // namespace CT::Test
