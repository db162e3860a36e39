// SPDX-License-Identifier: MIT
#include "ctredact/ct_key_words.h"

#include <algorithm>

#include "ctredact/ct_bytes.h"

namespace CT::Redact {

namespace {

bool begins_word(std::string_view name, std::size_t i) {
  const char before = name[i - 1];
  const char here = name[i];
  if (is_digit(here) != is_digit(before)) return true;
  if (!is_upper(here)) return false;
  const bool next_is_small = i + 1 < name.size() && is_lower(name[i + 1]);
  return !is_upper(before) || next_is_small;
}

}  // namespace

std::string words_of(std::string_view name) {
  std::string words;
  for (std::size_t i = 0; i != name.size(); ++i) {
    if (!is_alnum(name[i])) {
      if (!words.empty() && words.back() != ' ') words += ' ';
      continue;
    }
    const bool inside = i != 0 && is_alnum(name[i - 1]);
    if (inside && begins_word(name, i)) words += ' ';
    words += to_lower(name[i]);
  }
  if (!words.empty() && words.back() == ' ') words.pop_back();
  return words;
}

void KeyWords::add(std::string_view phrase, RuleId rule) {
  std::string words = words_of(phrase);
  if (words.empty()) return;
  std::vector<Phrase>& same = by_first_word_[words.substr(0, words.find(' '))];
  same.push_back({std::move(words), rule});
  known_.clear();
}

void KeyWords::remove(std::string_view phrase) {
  const std::string words = words_of(phrase);
  const auto same = by_first_word_.find(words.substr(0, words.find(' ')));
  if (same == by_first_word_.end()) return;
  std::vector<Phrase>& phrases = same->second;
  phrases.erase(std::remove_if(phrases.begin(), phrases.end(),
                               [&](const Phrase& row) { return row.words == words; }),
                phrases.end());
  known_.clear();
}

RuleId KeyWords::find(std::string_view name) const {
  constexpr std::size_t most_known = 8192;
  constexpr std::size_t longest_known = 64;
  if (name.empty()) return no_rule;
  if (name.size() > longest_known) return look_up(name);
  const auto known = known_.find(std::string(name));
  if (known != known_.end()) return known->second;
  if (known_.size() >= most_known) known_.clear();
  const RuleId rule = look_up(name);
  known_.emplace(name, rule);
  return rule;
}

RuleId KeyWords::look_up(std::string_view name) const {
  const std::string words = words_of(name) + ' ';
  RuleId found = no_rule;
  for (std::size_t begin = 0; begin < words.size();) {
    const std::size_t end = words.find(' ', begin);
    const auto same = by_first_word_.find(words.substr(begin, end - begin));
    if (same != by_first_word_.end()) {
      for (const Phrase& phrase : same->second) {
        const std::size_t size = phrase.words.size();
        const bool is_here =
            words.compare(begin, size, phrase.words) == 0 && words[begin + size] == ' ';
        if (is_here) found = std::min(found, phrase.rule);
      }
    }
    begin = end + 1;
  }
  return found;
}

}  // namespace CT::Redact
