// SPDX-License-Identifier: MIT
#include "ctredact/ct_shapes.h"

#include <algorithm>
#include <array>
#include <string>

#include "ctredact/ct_bytes.h"

namespace CT::Redact {

namespace {

bool is_token(char c) { return is_alnum(c) || c == '-' || c == '_'; }

std::size_t end_of_token(std::string_view text, std::size_t at) {
  while (at < text.size() && is_token(text[at])) ++at;
  return at;
}

constexpr std::size_t fewest_card_digits = 13;
constexpr std::size_t most_card_digits = 19;

// By the check digit, and by what the numbers of card issuers begin with.
bool is_card(const char* digits, std::size_t count) {
  const bool may_be_issuer = digits[0] >= '3' && digits[0] <= '6';
  const bool is_new_range = digits[0] == '2' && digits[1] >= '2' && digits[1] <= '7' && count == 16;
  if (!may_be_issuer && !is_new_range) return false;
  int sum = 0;
  for (std::size_t i = 0; i != count; ++i) {
    const int digit = digits[count - 1 - i] - '0';
    const int doubled = digit * 2;
    sum += i % 2 == 0 ? digit : doubled > 9 ? doubled - 9 : doubled;
  }
  // One digit throughout is a filler.
  const bool is_filler =
      std::all_of(digits, digits + count, [&](char c) { return c == digits[0]; });
  return sum % 10 == 0 && !is_filler;
}

// The end of the longest card that begins here, 0 for none. Digits with single blanks or dashes.
std::size_t card_end(std::string_view text, std::size_t at) {
  std::array<char, most_card_digits> digits{};
  std::size_t count = 0;
  std::size_t found = 0;
  for (std::size_t i = at; i < text.size(); ++i) {
    if (is_digit(text[i])) {
      if (count == digits.size()) return found;
      digits[count++] = text[i];
      const bool ends = i + 1 == text.size() || !is_digit(text[i + 1]);
      if (ends && count >= fewest_card_digits && is_card(digits.data(), count)) found = i + 1;
      continue;
    }
    const bool goes_on =
        (text[i] == ' ' || text[i] == '-') && i + 1 < text.size() && is_digit(text[i + 1]);
    if (!goes_on) break;
  }
  return found;
}

int add_to_remainder(int remainder, char c) {
  constexpr int modulus = 97;
  if (is_digit(c)) return (remainder * 10 + (c - '0')) % modulus;
  return (remainder * 100 + (c - 'A' + 10)) % modulus;
}

bool has_true_check(const std::string& account) {
  int remainder = 0;
  for (std::size_t i = 0; i != account.size(); ++i) {
    remainder = add_to_remainder(remainder, account[(i + 4) % account.size()]);
  }
  return remainder == 1;
}

bool is_mailbox(char c) {
  constexpr std::string_view others = "._%+-";
  return is_alnum(c) || others.find(c) != std::string_view::npos;
}

}  // namespace

Seen see_jwt(std::string_view text, std::size_t at) {
  constexpr std::size_t shortest_part = 8;
  const std::size_t first = end_of_token(text, at);
  if (first - at < shortest_part || first >= text.size() || text[first] != '.') {
    return {0, first - at};
  }
  const std::size_t second = end_of_token(text, first + 1);
  if (second - first <= shortest_part) return {0, first - at};
  const bool has_third = second < text.size() && text[second] == '.';
  const std::size_t end = has_third ? end_of_token(text, second + 1) : second;
  return {end - at, end - at};
}

Seen see_private_key(std::string_view text, std::size_t at) {
  constexpr std::string_view begin = "-----BEGIN ";
  constexpr std::size_t longest_name = 64;
  if (text.substr(at, begin.size()) != begin) return {};
  const std::string_view name = text.substr(at, longest_name);
  const std::size_t key = name.find("PRIVATE KEY");
  if (key == std::string_view::npos) return {0, begin.size()};
  const std::size_t end = text.find("-----END ", at + key);
  if (end == std::string_view::npos) return {text.size() - at, text.size() - at};
  const std::size_t last = text.find("-----", end + 9);
  const std::size_t size = (last == std::string_view::npos ? text.size() : last + 5) - at;
  return {size, size};
}

SeenCard see_card(std::string_view text, std::size_t at) {
  std::size_t group = at;
  while (group < text.size() && is_digit(text[group])) ++group;
  SeenCard seen{at, 0, group - at};
  if (group - at > most_card_digits) return seen;
  const std::size_t end = card_end(text, at);
  if (end == 0) return seen;
  return {at, end - at, end - at};
}

bool is_card(std::int64_t number) {
  if (number < 1'000'000'000'000) return false;
  const std::string digits = std::to_string(number);
  return is_card(digits.data(), digits.size());
}

Seen see_iban(std::string_view text, std::size_t at) {
  constexpr std::size_t fewest = 15;
  constexpr std::size_t most = 34;
  std::string account;
  std::size_t size = 0;
  for (std::size_t i = at; i < text.size() && account.size() <= most; ++i) {
    const char c = text[i];
    const bool is_part = is_upper(c) || is_digit(c);
    if (is_part) account += c;
    const bool goes_on = i + 1 < text.size() && is_alnum(text[i + 1]);
    if (is_part && !goes_on && account.size() >= fewest && account.size() <= most &&
        has_true_check(account)) {
      size = i + 1 - at;
    }
    if (!is_part && !(c == ' ' && goes_on)) break;
  }
  return {size, std::max<std::size_t>(size, 1)};
}

Seen see_password_hash(std::string_view text, std::size_t at) {
  static constexpr std::array<std::string_view, 9> marks = {
      "$2y$", "$2a$", "$2b$", "$argon2", "$1$", "$5$", "$6$", "$P$", "$scrypt$"};
  const std::string_view rest = text.substr(at);
  const bool is_one = std::any_of(marks.begin(), marks.end(), [&](std::string_view mark) {
    return rest.substr(0, mark.size()) == mark;
  });
  if (!is_one) return {};
  constexpr std::string_view others = "$./+=,-_";
  constexpr std::size_t shortest = 20;
  std::size_t end = at;
  while (end < text.size() &&
         (is_alnum(text[end]) || others.find(text[end]) != std::string_view::npos)) {
    ++end;
  }
  return {end - at >= shortest ? end - at : 0, end - at};
}

Part see_email(std::string_view text, std::size_t at) {
  constexpr std::size_t longest_name = 64;
  constexpr std::size_t longest_host = 253;
  std::size_t begin = at;
  while (begin != 0 && at - begin < longest_name && is_mailbox(text[begin - 1])) --begin;
  std::size_t end = at + 1;
  std::size_t point = 0;
  while (end < text.size() && end - at <= longest_host) {
    const char c = text[end];
    if (c == '.' && end + 1 < text.size() && is_alpha(text[end + 1])) {
      point = end;
    } else if (!is_alnum(c) && c != '-') {
      break;
    }
    ++end;
  }
  const bool is_one = begin != at && point > at + 1 && end - point > 2;
  return is_one ? Part{begin, end} : Part{};
}

Login see_login(std::string_view text, std::size_t at) {
  constexpr std::size_t longest = 512;
  const std::size_t begin = at + 3;
  std::size_t host = 0;  // behind the last @
  std::size_t colon = 0;
  for (std::size_t i = begin; i < text.size() && i - begin < longest; ++i) {
    const char c = text[i];
    if (c == '@') host = i;
    if (c == ':' && colon == 0) colon = i;
    constexpr std::string_view ends = "/?#\"'<>\\";
    if (is_space(c) || ends.find(c) != std::string_view::npos) break;
  }
  if (host == 0) return {};
  if (colon == 0 || colon > host) return {{begin, host}, {}};
  return {{begin, colon}, {colon + 1, host}};
}

}  // namespace CT::Redact
