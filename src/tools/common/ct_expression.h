// SPDX-License-Identifier: MIT
//
// Regular expressions as users write them on a command line, between slashes: those of PCRE, found
// anywhere in a text unless they are anchored. One that tries too much to decide, as /(a+)+$/ can,
// does not match.
#pragma once

#include <QRegularExpression>
#include <cstdint>
#include <string>
#include <string_view>

namespace CT::Tool {

class Expression {
 public:
  enum class Case : std::uint8_t { matters, ignored };

  // Whether the text is /an expression/, good or bad.
  static bool is_one(std::string_view text);

  // Matches everything.
  Expression() = default;
  // Requires: is_one(text). UTF-8; what is not is U+FFFD, here and in what is matched.
  explicit Expression(std::string_view text, Case of_letters);

  // Why it is none; empty for a good one. Such a one matches nothing.
  [[nodiscard]] const std::string& error() const { return error_; }
  [[nodiscard]] bool matches(std::string_view text) const;

 private:
  QRegularExpression expression_;
  std::string error_;
};

}  // namespace CT::Tool
