// SPDX-License-Identifier: MIT
//
// Patterns for the names of functions, as users write them on a command line:
//
//   Note::html   the one method       Note::*   a class      *::query   a method of any class
//   /^str_/      a regular expression, anywhere in the name unless it is anchored
//
// `*` stands for any text and `?` for any character. Capitals do not matter, as in PHP.
#pragma once

#include <QRegularExpression>
#include <string>
#include <string_view>

namespace CT::Tool {

class NamePattern {
 public:
  // Matches every name.
  NamePattern() : glob_("*") {}
  // A pattern as above, UTF-8. If it is a regular expression that is none, is_valid() is false and
  // it matches nothing.
  explicit NamePattern(std::string_view text);

  [[nodiscard]] bool is_valid() const { return error_.empty(); }
  // Why not; UTF-8.
  [[nodiscard]] const std::string& error() const { return error_; }

  // `name` is "Class::method" or the name of a plain function.
  [[nodiscard]] bool matches(std::string_view name) const;

 private:
  std::string glob_;  // in small letters
  QRegularExpression expression_;
  bool is_expression_ = false;
  std::string error_;
};

}  // namespace CT::Tool
