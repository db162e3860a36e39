// SPDX-License-Identifier: MIT
//
// TextScanner: reads words, numbers, quoted strings and marks from a small text language, line by
// line. Blanks and `#` comments are skipped; inside brackets a statement may go on over several
// lines. Mistakes are thrown as TextError with the number of the line. Borrows the text.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace CT::Test {

class TextError : public std::runtime_error {
 public:
  TextError(std::size_t line, const std::string& message)
      : std::runtime_error("line " + std::to_string(line) + ": " + message),
        line_(line),
        message_(message) {}
  std::size_t line() const { return line_; }
  const std::string& message() const { return message_; }

 private:
  std::size_t line_;
  std::string message_;
};

class TextScanner {
 public:
  explicit TextScanner(std::string_view text) : text_(text) {}

  bool at_end();          // of the text; skips empty lines
  bool at_end_of_line();  // of the statement
  void expect_end_of_line();

  // Each `accept` consumes what it names if that comes next; each `expect` fails if it does not.
  bool accept(std::string_view mark);  // punctuation; brackets are counted
  void expect(std::string_view mark);
  bool accept_word(std::string_view word);
  void expect_word(std::string_view word);
  bool accept_label(std::string& label);  // a word and a colon

  bool at_string() { return next() == '"'; }
  bool at_digit() { return next() >= '0' && next() <= '9'; }
  bool at_word();
  bool at_word(std::string_view word) { return peek_word() == word; }
  bool at_number();  // a digit, or a minus before one

  std::string word(std::string_view what);
  std::string string();                                      // "..." with \\ \" \n \r \t \0 \xHH
  std::uint64_t number(std::uint64_t largest = UINT64_MAX);  // decimal or 0x...
  std::string digits();                                      // a run of decimal digits
  std::string number_text();  // the characters of a number with sign, point, exponent
  std::string run();          // characters up to the next blank
  std::string hex_bytes();    // pairs of hex digits up to the next mark

  [[noreturn]] void fail(const std::string& message) const;

 private:
  char next();  // the next character that counts; '\n' at the end of a statement or of the text
  char peek(std::size_t ahead = 0) const {
    return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '\n';
  }
  void skip(std::size_t count);  // past characters, counting lines
  char escaped();
  std::string_view peek_word();

  std::string_view text_;
  std::size_t pos_ = 0;
  std::size_t line_ = 1;
  int depth_ = 0;  // open brackets
};

}  // namespace CT::Test
