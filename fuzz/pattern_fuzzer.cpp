// SPDX-License-Identifier: MIT
//
// A pattern for names, a NUL, and the name that it is held against.
#include <algorithm>
#include <string>

#include "support.h"
#include "tools/common/ct_expression.h"
#include "tools/common/ct_name_pattern.h"

namespace {

using CT::Tool::NamePattern;

char capital(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// What must hold whatever the two are.
void check_glob(std::string_view pattern, std::string_view name, bool matches) {
  using CT::Fuzz::expect;
  const std::string glob(pattern);
  expect(NamePattern("*" + glob).matches(name) || !matches, "a star may stand for nothing");
  expect(NamePattern(glob + "*").matches(name) || !matches, "at the end too");
  const std::string long_name = std::string(name) + "x";
  expect(NamePattern(glob + "*").matches(long_name) || !matches, "a star stands for anything");
  std::string capitals(name);
  std::transform(capitals.begin(), capitals.end(), capitals.begin(), capital);
  expect(NamePattern(pattern).matches(capitals) == matches, "capitals do not matter");
  if (pattern.find_first_of("*?") != std::string_view::npos) return;
  expect(!matches || pattern.size() == name.size(), "a plain pattern is the whole name");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CT::Fuzz::silence_log();
  const std::string_view input = CT::Fuzz::as_text(data, size);
  const std::size_t end = std::min(input.find('\0'), input.size());
  const std::string_view pattern = input.substr(0, end);
  const std::string_view name = input.substr(std::min(end + 1, input.size()));
  const NamePattern made(pattern);
  const bool matches = made.matches(name);
  if (CT::Tool::Expression::is_one(pattern)) {
    CT::Fuzz::expect(made.is_valid() || !made.error().empty(), "a reason");
    CT::Fuzz::expect(made.is_valid() || !matches, "a bad expression matches nothing");
    return 0;
  }
  CT::Fuzz::expect(made.is_valid(), "every other pattern is good");
  CT::Fuzz::expect(NamePattern("*").matches(name), "a star matches all");
  check_glob(pattern, name, matches);
  return 0;
}
