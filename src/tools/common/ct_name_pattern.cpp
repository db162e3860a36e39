// SPDX-License-Identifier: MIT
#include "tools/common/ct_name_pattern.h"

#include <algorithm>
#include <iterator>

namespace CT::Tool {

namespace {

// PHP folds the letters of ASCII alone.
char folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Behind a star everything may be skipped; if what follows does not fit, the last star takes one
// character more.
bool glob_matches(std::string_view glob, std::string_view name) {
  constexpr std::size_t none = std::string_view::npos;
  std::size_t at = 0;
  std::size_t star = none;
  std::size_t resume = 0;
  for (std::size_t i = 0; i != name.size();) {
    if (at != glob.size() && glob[at] == '*') {
      star = at++;
      resume = i;
    } else if (at != glob.size() && glob[at] == '?') {
      ++at;
      while (++i != name.size() && is_continuation(name[i])) {
      }
    } else if (at != glob.size() && glob[at] == folded(name[i])) {
      ++at;
      ++i;
    } else if (star != none) {
      at = star + 1;
      i = ++resume;
    } else {
      return false;
    }
  }
  return glob.find_first_not_of('*', at) == none;
}

}  // namespace

NamePattern::NamePattern(std::string_view text) {
  if (Expression::is_one(text)) {
    expression_.emplace(text, Expression::Case::ignored);
  } else {
    std::transform(text.begin(), text.end(), std::back_inserter(glob_), folded);
  }
}

bool NamePattern::matches(std::string_view name) const {
  return expression_ ? expression_->matches(name) : glob_matches(glob_, name);
}

}  // namespace CT::Tool
