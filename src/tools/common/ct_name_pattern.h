// SPDX-License-Identifier: MIT
//
// Patterns for the names of functions, as users write them on a command line:
//
//   Note::html   the one method       Note::*   a class      *::query   a method of any class
//   /^str_/      a regular expression, anywhere in the name unless it is anchored
//
// `*` stands for any text and `?` for any character. Capitals do not matter, as in PHP.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/common/ct_expression.h"

namespace CT::Tool {

class NamePattern {
 public:
  // Matches every name.
  NamePattern() : glob_("*") {}
  // A pattern as above, UTF-8. If it is a regular expression that is none, is_valid() is false and
  // it matches nothing.
  explicit NamePattern(std::string_view text);

  [[nodiscard]] bool is_valid() const { return !expression_ || expression_->error().empty(); }
  // Why not; UTF-8, empty for a valid one.
  [[nodiscard]] std::string error() const { return expression_ ? expression_->error() : ""; }

  // `name` is "Class::method" or the name of a plain function.
  [[nodiscard]] bool matches(std::string_view name) const;

 private:
  std::string glob_;  // in small letters
  std::optional<Expression> expression_;
};

}  // namespace CT::Tool
