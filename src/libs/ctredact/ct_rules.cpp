// SPDX-License-Identifier: MIT
#include "ctredact/ct_rules.h"

#include <algorithm>
#include <charconv>

#include "ctredact/ct_bytes.h"

namespace CT::Redact {

namespace {

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
  return text;
}

// The parts between separators, trimmed, without empty ones.
std::vector<std::string> parts_of(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view part = trimmed(text.substr(0, end));
    if (!part.empty()) parts.emplace_back(part);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

template <class Number>
bool read_number(const std::string& text, Number& number) {
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

// "1", "all" or "result", and on what that depends. Empty, or what is wrong.
std::string read_place(std::string_view text, CallRule& rule) {
  const std::vector<std::string> words = parts_of(text, ' ');
  if (words.empty()) return "which argument?";
  if (words[0] == "result") {
    rule.place = CallRule::result;
  } else if (words[0] != "all" && !read_number(words[0], rule.place)) {
    return "\"" + words[0] + "\" is no number of an argument, nor all or result";
  }
  if (words.size() == 1) return {};
  std::size_t numbers = 2;
  if (words[1] == "named" && words.size() == 3) {
    return read_number(words[2], rule.named) ? "" : "named by which argument?";
  }
  if (words[1] == "when") {
    if (words.size() < 4 || !read_number(words[2], rule.when))
      return "when which argument is what?";
    numbers = 3;
  } else if (words[1] == "keys") {
    rule.has_keys = true;
  } else {
    return "\"" + words[1] + "\" is none of named, when and keys";
  }
  for (std::size_t i = numbers; i != words.size(); ++i) {
    std::int64_t number = 0;
    if (!read_number(words[i], number)) return "\"" + words[i] + "\" is no number";
    rule.numbers.push_back(number);
  }
  return {};
}

}  // namespace

bool matches_glob(std::string_view pattern, std::string_view name) {
  std::size_t at = 0;
  std::size_t star = std::string_view::npos;
  std::size_t behind = 0;
  std::size_t i = 0;
  while (i != name.size()) {
    if (at != pattern.size() && pattern[at] == '*') {
      star = at++;
      behind = i;
    } else if (at != pattern.size() && pattern[at] == name[i]) {
      ++at;
      ++i;
    } else if (star != std::string_view::npos) {
      at = star + 1;
      i = ++behind;
    } else {
      return false;
    }
  }
  while (at != pattern.size() && pattern[at] == '*') ++at;
  return at == pattern.size();
}

RuleId Rules::add_label(std::string label) {
  const auto known = std::find(labels_.begin(), labels_.end(), label);
  if (known != labels_.end()) return static_cast<RuleId>(known - labels_.begin());
  labels_.push_back(std::move(label));
  return static_cast<RuleId>(labels_.size() - 1);
}

std::string Rules::add(std::string_view text) {
  std::size_t number = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    ++number;
    if (line.empty() || line[0] == '#') continue;
    const std::string wrong = add_line(line);
    if (!wrong.empty()) return "line " + std::to_string(number) + ": " + wrong;
  }
  return {};
}

std::string Rules::add_line(std::string_view line) {
  const std::size_t blank = std::min(line.find(' '), line.size());
  const std::string_view word = line.substr(0, blank);
  const std::string_view rest = trimmed(line.substr(blank));
  if (rest.empty()) return "nothing behind \"" + std::string(word) + "\"";
  if (word == "header") return add_header(rest);
  if (word == "function") return add_function(rest);
  if (word == "call") return add_call(rest);
  if (word == "no") return remove(rest);
  if (word == "weak") {
    if (adds_weak_) return "weak twice";
    adds_weak_ = true;
    std::string wrong = add_line(rest);
    adds_weak_ = false;
    return wrong;
  }
  for (const std::string& part : parts_of(rest, ',')) {
    if (word == "key") {
      keys_.add(part, add_label("key " + words_of(part)));
    } else if (word == "prefix") {
      prefixes_[static_cast<unsigned char>(part[0])].push_back({part, add_label("prefix " + part)});
    } else if (word == "plain") {
      plain_.insert(in_small_letters(part));
    } else if (word == "shape") {
      std::string wrong = add_shape(part, true);
      if (!wrong.empty()) return wrong;
    } else {
      return "there is no rule \"" + std::string(word) + "\"";
    }
  }
  return {};
}

std::string Rules::add_shape(std::string_view name, bool is_wanted) {
  const auto row = std::find(shape_names.begin(), shape_names.end(), name);
  if (row == shape_names.end()) return "there is no shape \"" + std::string(name) + "\"";
  shapes_[static_cast<std::size_t>(row - shape_names.begin())] =
      is_wanted ? add_label("shape " + std::string(name)) : no_rule;
  return {};
}

std::string Rules::add_header(std::string_view rest) {
  HeaderForm form = HeaderForm::whole;
  const std::size_t as = rest.find(" as ");
  if (as != std::string_view::npos) {
    const std::string_view word = trimmed(rest.substr(as + 4));
    if (word == "credentials") {
      form = HeaderForm::credentials;
    } else if (word == "cookies") {
      form = HeaderForm::cookies;
    } else if (word == "cookie") {
      form = HeaderForm::cookie;
    } else {
      return "a header is credentials, cookies or cookie, not \"" + std::string(word) + "\"";
    }
    rest = rest.substr(0, as);
  }
  for (const std::string& part : parts_of(rest, ',')) {
    const std::string name = in_small_letters(part);
    headers_[name] = {form, add_label("header " + name)};
  }
  return {};
}

std::string Rules::add_function(std::string_view rest) {
  const std::size_t colon = rest.find(" : ");
  if (colon == std::string_view::npos) return "a function is NAME : ARGUMENTS";
  for (const std::string& place : parts_of(rest.substr(colon + 3), ',')) {
    CallRule rule;
    std::string wrong = read_place(place, rule);
    if (!wrong.empty()) return wrong;
    for (const std::string& name : parts_of(rest.substr(0, colon), ',')) {
      const std::string small = in_small_letters(name);
      rule.rule = add_label((adds_weak_ ? "weak function " : "function ") + name);
      if (adds_weak_) weak_.insert(rule.rule);
      add_named(small, rule);
    }
  }
  return {};
}

void Rules::add_named(const std::string& function, CallRule rule) {
  if (function.find('*') != std::string::npos) {
    patterns_.push_back({function, std::move(rule)});
  } else {
    functions_[function].push_back(std::move(rule));
  }
}

std::string Rules::add_call(std::string_view rest) {
  const std::size_t colon = rest.find(" : ");
  if (colon == std::string_view::npos) return "a call is VERB : ARGUMENTS";
  CallRule rule;
  std::string wrong = read_place(rest.substr(colon + 3), rule);
  if (!wrong.empty()) return wrong;
  for (const std::string& verb : parts_of(rest.substr(0, colon), ',')) {
    rule.rule = add_label((adds_weak_ ? "weak call " : "call ") + verb);
    if (adds_weak_) weak_.insert(rule.rule);
    verbs_.push_back({in_small_letters(verb), rule});
  }
  return {};
}

std::string Rules::remove(std::string_view rest) {
  const std::size_t blank = std::min(rest.find(' '), rest.size());
  const std::string_view word = rest.substr(0, blank);
  for (const std::string& part : parts_of(rest.substr(blank), ',')) {
    const std::string small = in_small_letters(part);
    if (word == "key") {
      keys_.remove(part);
    } else if (word == "header") {
      headers_.erase(small);
    } else if (word == "plain") {
      plain_.erase(small);
    } else if (word == "function") {
      functions_.erase(small);
      patterns_.erase(std::remove_if(patterns_.begin(), patterns_.end(),
                                     [&](const Pattern& row) { return row.glob == small; }),
                      patterns_.end());
    } else if (word == "call") {
      verbs_.erase(std::remove_if(verbs_.begin(), verbs_.end(),
                                  [&](const Verb& row) { return row.word == small; }),
                   verbs_.end());
    } else if (word == "prefix") {
      auto& same = prefixes_[static_cast<unsigned char>(part[0])];
      same.erase(std::remove_if(same.begin(), same.end(),
                                [&](const Prefix& row) { return row.text == part; }),
                 same.end());
    } else if (word == "shape") {
      std::string wrong = add_shape(part, false);
      if (!wrong.empty()) return wrong;
    } else {
      return "there is no rule \"" + std::string(word) + "\" to take away";
    }
  }
  return {};
}

const HeaderRule* Rules::header(std::string_view name) const {
  constexpr std::size_t longest = 64;
  if (name.size() > longest) return nullptr;
  const auto found = headers_.find(in_small_letters(name));
  return found != headers_.end() ? &found->second : nullptr;
}

bool Rules::is_plain(std::string_view text) const {
  constexpr std::size_t longest = 64;
  return text.size() <= longest && plain_.find(in_small_letters(text)) != plain_.end();
}

std::vector<CallRule> Rules::calls(std::string_view function, bool is_user) const {
  std::vector<CallRule> found;
  const std::string small = in_small_letters(function);
  const auto exact = functions_.find(small);
  if (exact != functions_.end()) found = exact->second;
  for (const Pattern& pattern : patterns_) {
    if (matches_glob(pattern.glob, small)) found.push_back(pattern.rule);
  }
  const std::size_t colons = function.rfind("::");
  const std::string_view own =
      colons == std::string_view::npos ? function : function.substr(colons + 2);
  if (!is_user || keys_.find(own) == no_rule) return found;
  const std::string words = words_of(own);
  const std::string first = words.substr(0, words.find(' '));
  for (const Verb& verb : verbs_) {
    if (verb.word == first) found.push_back(verb.rule);
  }
  return found;
}

}  // namespace CT::Redact
