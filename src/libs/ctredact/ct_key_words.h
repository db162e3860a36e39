// SPDX-License-Identifier: MIT
//
// Names that tell of secrets, told by their words: `user_password`, `apiToken` and `X-API-KEY` are
// of the words "user password", "api token" and "x api key". A name matches if the words of a
// phrase stand in it side by side, in any case.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace CT::Redact {

// The number of a rule, by which the report names it.
using RuleId = std::uint32_t;
inline constexpr RuleId no_rule = UINT32_MAX;

// The words of a name, in small letters with a blank between them. A word ends at what is no letter
// or digit, between letters and digits, and where capitals begin or end.
std::string words_of(std::string_view name);

class KeyWords {
 public:
  // Words with blanks between them, in any case. Of two phrases in a name the first added counts.
  void add(std::string_view phrase, RuleId rule);
  void remove(std::string_view phrase);

  // The rule of the phrase that stands in the name; no_rule if there is none.
  [[nodiscard]] RuleId find(std::string_view name) const;

 private:
  struct Phrase {
    std::string words;
    RuleId rule;
  };
  [[nodiscard]] RuleId look_up(std::string_view name) const;

  std::unordered_map<std::string, std::vector<Phrase>> by_first_word_;
  // Names come again and again. It never holds more than a fixed number of them.
  mutable std::unordered_map<std::string, RuleId> known_;
};

}  // namespace CT::Redact
