// SPDX-License-Identifier: MIT
//
// "5ms" or "2%": a time from which on something counts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace CT::Tool {

// In nanoseconds; a share is of `whole_ns`, rounded up. 0 for an empty text. Nothing, after it was
// said why, if it is neither a time nor a share from 0% to 100%.
std::optional<std::int64_t> least_time(const std::string& text, std::int64_t whole_ns);

}  // namespace CT::Tool
