// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_least_time.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "tools/cttool/ct_format.h"

namespace CT::Tool {

namespace {

std::optional<std::int64_t> share_of(const std::string& text, std::int64_t whole_ns) {
  const std::string number = text.substr(0, text.size() - 1);
  if (number.find_first_not_of("0123456789.") != std::string::npos) return std::nullopt;
  constexpr double hundred = 100;
  char* end = nullptr;
  const double percent = std::strtod(number.c_str(), &end);
  if (end == number.c_str() || *end != '\0' || percent > hundred) return std::nullopt;
  if (percent == hundred) return whole_ns;
  return static_cast<std::int64_t>(std::ceil(static_cast<double>(whole_ns) / hundred * percent));
}

}  // namespace

std::optional<std::int64_t> least_time(const std::string& text, std::int64_t whole_ns) {
  if (text.empty()) return 0;
  const auto least = text.back() == '%' ? share_of(text, whole_ns) : parse_time(text);
  if (!least) {
    std::fprintf(stderr, "%s is no time, such as 5ms or 250us, and no share, such as 2%%\n",
                 text.c_str());
  }
  return least;
}

}  // namespace CT::Tool
