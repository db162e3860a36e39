// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_json_check.h"

#include <algorithm>
#include <vector>

namespace CT::Tool {

namespace {

class Checker {
 public:
  explicit Checker(std::string_view text) : left_(text) {}

  bool run() {
    if (!value()) return false;
    while (!is_object_.empty()) {
      blanks();
      const bool in_object = is_object_.back();
      if (take(in_object ? '}' : ']')) {
        is_object_.pop_back();
        is_first_ = false;
        continue;
      }
      if (!is_first_ && !take(',')) return false;
      if (in_object && !key()) return false;
      if (!value()) return false;
    }
    blanks();
    return left_.empty();
  }

 private:
  // A scalar, or the begin of an array or object.
  bool value() {
    blanks();
    if (left_.starts_with('[') || left_.starts_with('{')) {
      is_object_.push_back(left_.front() == '{');
      left_.remove_prefix(1);
      is_first_ = true;
      return true;
    }
    is_first_ = false;
    return word("null") || word("true") || word("false") || string() || number();
  }

  bool key() {
    blanks();
    if (!string()) return false;
    blanks();
    return take(':');
  }

  bool string() {
    if (!take('"')) return false;
    while (!left_.empty()) {
      const char c = left_.front();
      left_.remove_prefix(1);
      if (c == '"') return true;
      if (static_cast<unsigned char>(c) < ' ') return false;
      if (c == '\\' && !escape()) return false;
    }
    return false;
  }

  bool escape() {
    constexpr std::size_t digits = 4;
    if (take('u')) {
      const std::string_view code = left_.substr(0, digits);
      left_.remove_prefix(code.size());
      return code.size() == digits &&
             code.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
    }
    const bool is_one = !left_.empty() && std::string_view("\"\\/bfnrt").find(left_.front()) !=
                                              std::string_view::npos;
    if (is_one) left_.remove_prefix(1);
    return is_one;
  }

  bool number() {
    take('-');
    if (!take('0') && !digits()) return false;
    if (take('.') && !digits()) return false;
    if (!take('e') && !take('E')) return true;
    if (!take('+')) take('-');
    return digits();
  }

  bool digits() {
    const std::size_t count = std::min(left_.find_first_not_of("0123456789"), left_.size());
    left_.remove_prefix(count);
    return count != 0;
  }

  bool word(std::string_view word) {
    if (!left_.starts_with(word)) return false;
    left_.remove_prefix(word.size());
    return true;
  }
  bool take(char c) {
    if (!left_.starts_with(c)) return false;
    left_.remove_prefix(1);
    return true;
  }
  void blanks() { left_.remove_prefix(std::min(left_.find_first_not_of(" \t\r\n"), left_.size())); }

  std::string_view left_;
  std::vector<bool> is_object_;  // around what comes next
  bool is_first_ = true;         // nothing of the innermost was seen yet
};

}  // namespace

bool is_json(std::string_view text) { return Checker(text).run(); }

}  // namespace CT::Tool
