// SPDX-License-Identifier: MIT
//
// Colours of a terminal, by what they are for. They only stress what the words say anyway.
#pragma once

#include <string>
#include <string_view>

namespace CT::Tool {

class Style {
 public:
  // Off: every text stays as it is.
  explicit Style(bool is_on = false) : is_on_(is_on) {}

  [[nodiscard]] bool is_on() const { return is_on_; }

  // Titles and rows of titles.
  [[nodiscard]] std::string heading(std::string_view text) const { return in("1", text); }
  // What went wrong: errors, exceptions, calls that never ended.
  [[nodiscard]] std::string bad(std::string_view text) const { return in("31", text); }
  // What matters less, such as notes on what was left out.
  [[nodiscard]] std::string dim(std::string_view text) const { return in("2", text); }

 private:
  [[nodiscard]] std::string in(std::string_view code, std::string_view text) const {
    std::string styled;
    if (is_on_ && !text.empty()) styled.append("\x1B[").append(code).append("m");
    styled.append(text);
    if (is_on_ && !text.empty()) styled.append("\x1B[0m");
    return styled;
  }

  bool is_on_;
};

}  // namespace CT::Tool
