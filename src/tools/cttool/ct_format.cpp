// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_format.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <cstdlib>

namespace CT::Tool {

std::string as_ms(std::int64_t nanoseconds) {
  constexpr std::int64_t microsecond = 1000;
  constexpr std::int64_t half = microsecond / 2;
  const std::int64_t rounded =
      nanoseconds / microsecond + (nanoseconds % microsecond >= half ? 1 : 0);
  return fmt::format("{}.{:03}", rounded / microsecond, rounded % microsecond);
}

std::string as_percent(std::int64_t part, std::int64_t whole) {
  constexpr double hundred = 100;
  const double share =
      whole != 0 ? hundred * static_cast<double>(part) / static_cast<double>(whole) : 0;
  return fmt::format("{:.1f} %", share);
}

std::string as_count(std::int64_t count) {
  constexpr std::size_t group = 3;
  const std::string digits = fmt::format("{}", count);
  const std::size_t first = digits.front() == '-' ? 1 : 0;
  std::string grouped;
  for (std::size_t i = 0; i != digits.size(); ++i) {
    if (i > first && (digits.size() - i) % group == 0) grouped += ',';
    grouped += digits[i];
  }
  return grouped;
}

std::string as_bytes(std::int64_t bytes) {
  constexpr std::array units = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  constexpr double step = 1024;
  auto amount = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; std::abs(amount) >= step && unit + 1 != units.size(); ++unit) amount /= step;
  return unit == 0 ? fmt::format("{} B", bytes) : fmt::format("{:.1f} {}", amount, units[unit]);
}

std::string beyond_max_size(std::string_view what, std::uint64_t max_size) {
  return fmt::format("{} is larger than {}; --max-size 8G allows more", what,
                     as_bytes(static_cast<std::int64_t>(max_size)));
}

std::optional<std::int64_t> parse_time(std::string_view text) {
  struct Unit {
    std::string_view name;
    double nanoseconds;
  };
  constexpr std::array units = {Unit{"", 1e6},          Unit{"ns", 1},   Unit{"us", 1e3},
                                Unit{"\xC2\xB5s", 1e3}, Unit{"ms", 1e6}, Unit{"s", 1e9}};
  const std::size_t digits = text.find_first_not_of("0123456789.");
  const std::string number(text.substr(0, digits));
  if (number.empty() || number == ".") return std::nullopt;
  char* end = nullptr;
  const double amount = std::strtod(number.c_str(), &end);
  if (*end != '\0') return std::nullopt;
  std::string_view unit = digits == std::string_view::npos ? "" : text.substr(digits);
  while (unit.starts_with(' ')) unit.remove_prefix(1);
  constexpr double longest = 9e18;  // 285 years
  for (const Unit& known : units) {
    const double nanoseconds = amount * known.nanoseconds;
    if (known.name == unit && nanoseconds <= longest) return std::llround(nanoseconds);
  }
  return std::nullopt;
}

}  // namespace CT::Tool
