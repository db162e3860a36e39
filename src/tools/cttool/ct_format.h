// SPDX-License-Identifier: MIT
//
// Figures for people: times in milliseconds, shares, counts, bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace CT::Tool {

// Three digits behind the point: "12.345". Rounded to the nearest microsecond, halves up.
std::string as_ms(std::int64_t nanoseconds);
// One digit behind the point and the sign: "3.1 %". Of nothing everything is 0.0 %.
std::string as_percent(std::int64_t part, std::int64_t whole);
// In groups of three digits: "1,234,567".
std::string as_count(std::int64_t count);
// In the largest binary unit that it fills: "512 B", "-1.5 KiB", "20.0 MiB".
std::string as_bytes(std::int64_t bytes);
// Why something is not read that is larger than Session::max_size.
std::string beyond_max_size(std::string_view what, std::uint64_t max_size);

// "5ms", "1.5s", "250us" or "90ns" as nanoseconds; nothing if it is no such time. A number without
// a unit is in milliseconds.
std::optional<std::int64_t> parse_time(std::string_view text);

}  // namespace CT::Tool
