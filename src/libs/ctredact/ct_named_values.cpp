// SPDX-License-Identifier: MIT
#include "ctredact/ct_named_values.h"

#include <algorithm>
#include <array>

#include "ctredact/ct_bytes.h"

namespace CT::Redact {

namespace {

constexpr std::size_t longest_name = 64;
constexpr std::size_t most_blanks = 8;

// What quotes are written as. An escaped one ends with the same escaped one.
constexpr std::array<std::string_view, 7> quotes = {"\\\"",    "&quot;", "&#039;", "&#39;",
                                                    "\\u0022", "\"",     "'"};

std::string_view quote_at(std::string_view text, std::size_t at) {
  for (const std::string_view quote : quotes) {
    if (text.substr(at, quote.size()) == quote) return quote;
  }
  return {};
}

std::string_view quote_before(std::string_view text, std::size_t end) {
  for (const std::string_view quote : quotes) {
    if (end >= quote.size() && text.substr(end - quote.size(), quote.size()) == quote) return quote;
  }
  return {};
}

bool is_name(char c) {
  constexpr std::string_view others = "_-.[]%$";
  return is_alnum(c) || others.find(c) != std::string_view::npos;
}

std::size_t behind_blanks(std::string_view text, std::size_t at) {
  const std::size_t most = std::min(text.size(), at + most_blanks);
  while (at < most && is_space(text[at])) ++at;
  return at;
}

// Behind the first quote up to the next of its kind, or the end.
Part quoted_part(std::string_view text, std::size_t at, std::string_view quote) {
  const std::size_t begin = at + quote.size();
  for (std::size_t end = begin; end < text.size(); ++end) {
    if (quote.size() == 1 && text[end] == '\\') {
      ++end;
    } else if (text.compare(end, quote.size(), quote) == 0) {
      return {begin, end};
    }
  }
  return {std::min(begin, text.size()), text.size()};
}

// Behind string(7) and a blank, as var_dump() shows it; the same place for anything else.
std::size_t behind_dumped_type(std::string_view text, std::size_t at) {
  constexpr std::string_view type = "string(";
  if (text.substr(at, type.size()) != type) return at;
  std::size_t end = at + type.size();
  while (end < text.size() && is_digit(text[end])) ++end;
  return text.substr(end, 2) == ") " ? end + 2 : at;
}

bool ends_bare(char c) {
  constexpr std::string_view ends = "&;,\"'<>)]}\\";
  return is_space(c) || ends.find(c) != std::string_view::npos;
}

}  // namespace

NameBefore name_before(std::string_view text, std::size_t separator) {
  std::size_t end = separator;
  for (std::size_t i = 0; i != most_blanks && end != 0 && is_blank(text[end - 1]); ++i) --end;
  // ["name"]=> as var_dump() shows it.
  if (end > 1 && text[end - 1] == ']' && !quote_before(text, end - 1).empty()) --end;
  const std::string_view quote = quote_before(text, end);
  end -= quote.size();
  std::size_t begin = end;
  while (begin != 0 && end - begin < longest_name && is_name(text[begin - 1])) --begin;
  NameBefore found;
  found.name = text.substr(begin, end - begin);
  found.is_quoted = !quote.empty();
  const char before = begin == 0 ? '\n' : text[begin - 1];
  found.begins_line = before == '\n' || before == '"' || before == '\'';
  return found;
}

ValueBehind value_behind(std::string_view text, std::size_t separator) {
  std::size_t at = separator + 1;
  if (text[separator] == '=' && at < text.size() && text[at] == '>') ++at;
  if (text.substr(at, 4) == "&gt;") at += 4;
  const std::size_t value = behind_blanks(text, at);
  if (value >= text.size()) return {};
  const std::size_t dumped = behind_dumped_type(text, value);
  const std::string_view quote = quote_at(text, dumped);
  if (!quote.empty()) return {quoted_part(text, dumped, quote), true, false};
  if (text[value] == '[') {
    const std::size_t end = std::min(text.find(']', value), text.size());
    return {{value + 1, end}, false, true};
  }
  // Placeholders and variables of code; a form has no blank before its value.
  constexpr std::string_view code = "?:$%({";
  if (value != at && code.find(text[value]) != std::string_view::npos) return {};
  std::size_t end = value;
  if (separator >= 2 && text.substr(separator - 2, 4) == "] =>") {
    end = std::min(text.find('\n', value), text.size());  // as print_r() shows it
  }
  while (end < text.size() && text[end] != '\n' && !ends_bare(text[end])) ++end;
  return {{value, end}, false, false};
}

Part serialized_text(std::string_view text, std::size_t colon) {
  constexpr std::size_t most_digits = 9;
  std::size_t size = 0;
  std::size_t at = colon + 1;
  while (at < text.size() && at - colon <= most_digits && is_digit(text[at])) {
    size = size * 10 + static_cast<std::size_t>(text[at++] - '0');
  }
  if (at == colon + 1 || text.substr(at, 2) != ":\"") return {};
  const std::size_t begin = at + 2;
  return {begin, begin + std::min(size, text.size() - begin)};
}

Part header_value(std::string_view text, std::size_t colon) {
  constexpr std::string_view line_end = "\r\n";
  std::size_t begin = colon + 1;
  while (begin < text.size() && is_blank(text[begin])) ++begin;
  const std::size_t end = std::min(text.find_first_of(line_end, begin), text.size());
  return {std::min(begin, end), end};
}

Part value_of_tag(std::string_view text, std::size_t place) {
  constexpr std::size_t longest_tag = 512;
  std::size_t begin = place;
  while (begin != 0 && place - begin < longest_tag && text[begin] != '<') --begin;
  const std::size_t most = std::min(text.size(), place + 2 * longest_tag);
  const std::string_view tag = text.substr(begin, std::min(text.find('>', place), most) - begin);
  for (const std::string_view name : {"value=", "content="}) {
    const std::size_t found = tag.find(name);
    if (found == std::string_view::npos || found == 0 || is_alnum(tag[found - 1])) continue;
    return value_behind(text, begin + found + name.size() - 1).part;
  }
  return {};
}

Element element_at(std::string_view text, std::size_t place) {
  constexpr std::size_t longest_tag = 256;
  std::size_t end = place + 1;
  std::size_t begin = end;
  while (end < text.size() && end - place < longest_name && is_name(text[end])) ++end;
  if (end < text.size() && text[end] == ':') {
    begin = ++end;
    while (end < text.size() && end - begin < longest_name && is_name(text[end])) ++end;
  }
  if (begin == end || end == text.size()) return {};
  const std::size_t close = text.substr(end, longest_tag).find('>');
  if (close == std::string_view::npos || text[end + close - 1] == '/') return {};
  const std::size_t value = end + close + 1;
  const bool is_data = text.substr(value, 9) == "<![CDATA[";
  const std::size_t first = value + (is_data ? 9 : 0);
  return {
      text.substr(begin, end - begin),
      {first, std::min(is_data ? text.find("]]>", first) : text.find('<', first), text.size())}};
}

Part value_of_form_part(std::string_view text, std::size_t name_end) {
  constexpr std::string_view gap = "\"\r\n\r\n";
  if (text.substr(name_end, gap.size()) != gap) return {};
  const std::size_t begin = name_end + gap.size();
  return {begin, std::min(text.find("\r\n", begin), text.size())};
}

}  // namespace CT::Redact
