// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_sql_text.h"

#include <array>
#include <cstdint>

#include "codetrace/model/ct_string.h"

namespace CT {

namespace {

enum class Class : std::uint8_t { other, blank, digit, letter };

constexpr std::array<Class, 256> classes = [] {
  std::array<Class, 256> table{};
  for (const char c : {' ', '\t', '\n', '\r', '\f', '\v'}) {
    table[static_cast<unsigned char>(c)] = Class::blank;
  }
  for (unsigned c = '0'; c <= '9'; ++c) table[c] = Class::digit;
  for (unsigned c = 'a'; c <= 'z'; ++c) table[c] = table[c - 'a' + 'A'] = Class::letter;
  for (unsigned c = 0x80; c != table.size(); ++c) table[c] = Class::letter;
  table['_'] = Class::letter;
  return table;
}();

Class class_of(char c) { return classes[static_cast<unsigned char>(c)]; }

bool is_word(char c) { return class_of(c) >= Class::digit; }

enum class Kind : std::uint8_t { none, value, word, mark };

// Reads tokens from the front of a text.
class SqlScanner {
 public:
  explicit SqlScanner(std::string_view text) : text_(text) {}

  // Blanks and comments; whether there were any.
  bool skip_blanks() {
    const std::size_t start = at_;
    while (at_ != text_.size()) {
      if (class_of(text_[at_]) == Class::blank) {
        ++at_;
      } else if (starts("--") || is_hash_comment()) {
        find_end("\n");
      } else if (starts("/*")) {
        at_ += 2;
        find_end("*/");
      } else {
        break;
      }
    }
    return at_ != start;
  }

  // What comes next; of a value the text does not matter. None at the end.
  Kind next(std::string_view& token, bool after_operand) {
    if (at_ == text_.size()) return Kind::none;
    const std::size_t start = at_;
    const Kind kind = step(after_operand);
    token = text_.substr(start, at_ - start);
    return kind;
  }

 private:
  Kind step(bool after_operand) {
    const char c = text_[at_];
    if (c == '\'') return quoted('\'', true), Kind::value;
    if (c == '"' || c == '`') return quoted(c, false), Kind::word;
    if (class_of(c) == Class::digit || (c == '.' && !after_operand && digit_at(1))) return number();
    if ((c == '-' || c == '+') && !after_operand && (digit_at(1) || dot_digit_at(1))) {
      ++at_;
      return number();
    }
    if (class_of(c) == Class::letter) return word();
    if (c == '?') return ++at_, Kind::value;
    if (c == '$') return dollar();
    if (c == ':' && letter_at(1)) return ++at_, skip_word(), Kind::value;
    if (c == '@') return skip_marks('@'), skip_word(), Kind::word;
    if (c == ':') return skip_marks(':'), Kind::mark;
    return ++at_, Kind::mark;
  }

  [[nodiscard]] char peek(std::size_t ahead) const {
    return ahead < text_.size() - at_ ? text_[at_ + ahead] : '\0';
  }
  [[nodiscard]] bool digit_at(std::size_t ahead) const {
    return class_of(peek(ahead)) == Class::digit;
  }
  [[nodiscard]] bool dot_digit_at(std::size_t ahead) const {
    return peek(ahead) == '.' && digit_at(ahead + 1);
  }
  [[nodiscard]] bool letter_at(std::size_t ahead) const {
    return class_of(peek(ahead)) == Class::letter;
  }
  [[nodiscard]] bool starts(std::string_view mark) const {
    return text_.substr(at_).starts_with(mark);
  }
  // Some databases have operators that begin so.
  [[nodiscard]] bool is_hash_comment() const {
    return peek(0) == '#' && peek(1) != '>' && peek(1) != '-' && peek(1) != '#';
  }

  void find_end(std::string_view mark) {
    const std::size_t end = text_.find(mark, at_);
    at_ = end == std::string_view::npos ? text_.size() : end + mark.size();
  }
  void skip_word() {
    while (at_ != text_.size() && is_word(text_[at_])) ++at_;
  }
  void skip_marks(char mark) {
    while (at_ != text_.size() && text_[at_] == mark) ++at_;
  }

  // Up to the quote that is neither doubled nor, if it can be, behind a backslash.
  void quoted(char quote, bool escapes) {
    for (++at_; at_ != text_.size(); ++at_) {
      if (escapes && text_[at_] == '\\') {
        if (++at_ == text_.size()) return;
      } else if (text_[at_] == quote) {
        if (peek(1) != quote) {
          ++at_;
          return;
        }
        ++at_;
      }
    }
  }

  // 12, 1.5, 2e-3, 0x1F; letters that hang on are a part of it.
  Kind number() {
    while (at_ != text_.size()) {
      const char c = text_[at_];
      const bool is_sign = (c == '-' || c == '+') && (text_[at_ - 1] | 0x20) == 'e' && digit_at(1);
      if (!is_word(c) && c != '.' && !is_sign) break;
      ++at_;
    }
    return Kind::value;
  }

  // A letter before a quote belongs to the literal: X'1F', N'text', E'text', B'01'.
  Kind word() {
    constexpr std::string_view prefixes = "xXnNeEbB";
    if (prefixes.find(text_[at_]) != std::string_view::npos && peek(1) == '\'') {
      ++at_;
      return quoted('\'', true), Kind::value;
    }
    skip_word();
    return Kind::word;
  }

  // $1, or a text between two equal tags such as $$ and $body$.
  Kind dollar() {
    std::size_t end = at_ + 1;
    while (end != text_.size() && is_word(text_[end])) ++end;
    if (end != text_.size() && text_[end] == '$' && !digit_at(1)) {
      const std::string_view tag = text_.substr(at_, end + 1 - at_);
      at_ = end + 1;
      find_end(tag);
      return Kind::value;
    }
    at_ = end;
    return Kind::value;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// Puts tokens together; knows when it is inside of a list behind IN.
class LikeText {
 public:
  void add(Kind kind, std::string_view token, bool after_blank) {
    if (list_ == List::values) {
      if (kind == Kind::value || token == ",") {
        after_comma_ = kind != Kind::value;
        return;
      }
      end_list();
    }
    if (list_ == List::open && kind == Kind::value) {
      put("?...");
      list_ = List::values;
      last_ = Kind::value;
      after_open_ = after_in_ = false;
      return;
    }
    list_ = List::none;
    if (token == "(" && after_in_) list_ = List::open;
    const bool is_tight = token == ")" || token == "," || token == ";";
    const bool needs_blank = after_comma_ || (after_blank && !after_open_);
    if (!text_.empty() && needs_blank && !is_tight) put(" ");
    put(kind == Kind::value ? "?" : token);
    last_ = token == ")" ? Kind::value : kind;
    after_open_ = token == "(";
    after_comma_ = token == ",";
    after_in_ = is_in(token);
  }

  // Behind what a sign would be an operator.
  [[nodiscard]] bool after_operand() const { return last_ == Kind::value || last_ == Kind::word; }

  std::string take(bool is_cut) {
    while (!text_.empty() && (text_.back() == ';' || text_.back() == ' ')) text_.pop_back();
    if (is_cut) text_ += Checkpoint::String::cut_marker;
    return std::move(text_);
  }

 private:
  enum class List : std::uint8_t { none, open, values };

  // A list of more than values goes on behind those that were folded.
  void end_list() {
    list_ = List::none;
    if (after_comma_) put(",");
  }
  void put(std::string_view part) { text_ += part; }
  static bool is_in(std::string_view token) {
    return token.size() == 2 && (token[0] | 0x20) == 'i' && (token[1] | 0x20) == 'n';
  }

  std::string text_;
  Kind last_ = Kind::none;
  List list_ = List::none;
  bool after_open_ = false;
  bool after_comma_ = false;
  bool after_in_ = false;
};

}  // namespace

std::string like_sql(std::string_view text, bool is_cut) {
  SqlScanner scanner(text);
  LikeText like;
  std::string_view token;
  for (;;) {
    const bool after_blank = scanner.skip_blanks();
    const Kind kind = scanner.next(token, like.after_operand());
    if (kind == Kind::none) return like.take(is_cut);
    like.add(kind, token, after_blank);
  }
}

}  // namespace CT
