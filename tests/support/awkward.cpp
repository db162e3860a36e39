// SPDX-License-Identifier: MIT
#include "awkward.h"

#include <array>
#include <bit>
#include <cmath>
#include <string_view>

namespace CT::Test {

namespace {

using namespace std::string_view_literals;

constexpr std::array well_formed = {"a"sv,
                                    "%1"sv,
                                    "\""sv,
                                    "'"sv,
                                    "\\"sv,
                                    "\0"sv,
                                    "\x01"sv,
                                    "\x1F"sv,
                                    "\x7F"sv,
                                    "\t"sv,
                                    "\n"sv,
                                    "\r"sv,
                                    "\b\f"sv,
                                    "/"sv,
                                    "**CUT**"sv,
                                    "\xC2\x80"sv,
                                    "\xDF\xBF"sv,
                                    "\xE0\xA0\x80"sv,
                                    "\xE2\x80\xA8"sv,
                                    "\xED\x9F\xBF"sv,
                                    "1"sv,
                                    "\xEE\x80\x80"sv,
                                    "\xEF\xBF\xBD"sv,
                                    "\xEF\xBF\xBE"sv,
                                    "\xEF\xBF\xBF"sv,
                                    "key"sv,
                                    "\xEF\xBB\xBF"sv,
                                    "\xEF\xB7\x90"sv,
                                    "\xF0\x9F\x98\x80"sv,
                                    "\xF0\x90\x80\x80"sv,
                                    "\xF4\x8F\xBF\xBF"sv};

constexpr std::array ill_formed = {"\x80"sv,
                                   "\xBF"sv,
                                   "\xC0\x80"sv,
                                   "\xC1\xBF"sv,
                                   "\xC2"sv,
                                   "\xE0\x80\x80"sv,
                                   "\xE0\x9F\xBF"sv,
                                   "\xE2\x82"sv,
                                   "\xEF\xBB"sv,
                                   "\xED\xA0\x80"sv,
                                   "\xED\xA0\xBD\xED\xB8\x80"sv,
                                   "\xF0\x80\x80\x80"sv,
                                   "\xF0\x9F\x98"sv,
                                   "\xF4\x90\x80\x80"sv,
                                   "\xF5\x80\x80\x80"sv,
                                   "\xF8\x88\x80\x80\x80"sv,
                                   "\xFE"sv,
                                   "\xFF"sv};

constexpr std::string_view mark = "\xEF\xBB\xBF";

}  // namespace

std::string Awkward::bytes(std::size_t pieces) {
  std::string result;
  if (one_in(6)) result += mark;
  for (std::size_t left = below(pieces + 1); left != 0; --left) {
    switch (below(6)) {
      case 0: result += static_cast<char>(below(256)); break;
      case 1:
      case 2: result += ill_formed[below(ill_formed.size())]; break;
      case 3: result.append(below(40), 'x'); break;
      default: result += well_formed[below(well_formed.size())];
    }
  }
  return result;
}

std::string Awkward::text(std::size_t pieces) {
  std::string result;
  for (std::size_t left = below(pieces + 1); left != 0; --left) {
    if (one_in(5)) {
      result.append(below(20), 'x');
    } else {
      result += well_formed[below(well_formed.size())];
    }
  }
  return result.starts_with(mark) ? "." + result : result;
}

double Awkward::real() {
  const auto whole = static_cast<double>(static_cast<std::int64_t>(bits()));
  switch (below(7)) {
    case 0: return std::ldexp(1.0, static_cast<int>(below(2100)) - 1075);
    case 1: return std::pow(10.0, static_cast<double>(below(60)) - 30);
    case 2: return whole / std::pow(10.0, static_cast<double>(below(25)));
    case 3: return std::trunc(whole / std::pow(2.0, static_cast<double>(below(64))));
    case 4: return std::nextafter(std::pow(10.0, static_cast<double>(below(30)) - 8), 0.0);
    case 5: return 1.0 + static_cast<double>(below(3)) * 1e-9;
    default: return std::bit_cast<double>(bits());
  }
}

Fields Awkward::leaf(const ValueNames& names) {
  const std::uint64_t number = bits();
  const auto few = static_cast<std::uint32_t>(1 + below(60));
  switch (below(13)) {
    case 0: return value::undef();
    case 1: return value::null();
    case 2: return value::boolean(one_in(2));
    case 3: return value::integer(static_cast<std::int64_t>(number >> few));
    case 4: return value::real(real());
    case 5:
      return value::object(names.classes[below(names.classes.size())],
                           static_cast<std::uint32_t>(number));
    case 6: return value::resource(names.resources[below(names.resources.size())], number);
    case 7: return value::code(static_cast<std::uint8_t>(10 + below(246)));
    case 8: return value::cut_string(bytes(3), few);
    case 9: return one_in(3) ? value::cut_marker() : value::string("\xEF\xBB\xBF**CUT**");
    case 10: return value::array_header(one_in(2) ? 0 : -1);
    case 11: return value::integer(static_cast<std::int64_t>(number));
    default: return value::string(bytes(4));
  }
}

Fields Awkward::key(std::size_t index, bool list, std::size_t depth, const ValueNames& names) {
  if (list && !one_in(40)) return value::integer(static_cast<std::int64_t>(index));
  switch (below(10)) {
    case 0: return value::real(real());
    case 1: return value::integer(static_cast<std::int64_t>(below(4)));
    case 2: return value(depth < 2 ? depth : 2, false, names);
    case 3: return leaf(names);
    case 4: return value::string(bytes(1));
    default: return value::string(text(2));
  }
}

Fields Awkward::value(std::size_t depth, bool spine, const ValueNames& names) {
  if (depth == 0 || (!spine && !one_in(3))) return leaf(names);
  const bool list = one_in(2);
  const std::size_t count = (spine ? 1 : 0) + below(4);
  const std::size_t deepest = below(count + 1);
  Fields result = value::array_header(static_cast<std::int32_t>(count));
  for (std::size_t i = 0; i != count; ++i) {
    result.append(key(i, list, depth - 1, names));
    const bool goes_on = spine && (i == deepest || (i + 1 == count && deepest == count));
    const std::size_t below_here = goes_on ? depth - 1 : (depth - 1 < 2 ? depth - 1 : 2);
    result.append(value(below_here, goes_on, names));
  }
  return result;
}

}  // namespace CT::Test
