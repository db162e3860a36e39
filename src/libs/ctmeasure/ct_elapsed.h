// SPDX-License-Identifier: MIT
//
// Differences of what a file says, which may be anything: none of them overflows.
#pragma once

#include <cstdint>
#include <limits>

#include "kcommon/k_timestamp.h"

namespace CT {

// Nanoseconds from one point in time to another; about 292 years where there are more between them.
inline std::int64_t elapsed_ns(const KTime::Timestamp& from, const KTime::Timestamp& to) {
  constexpr std::int64_t second = 1'000'000'000;
  const std::int64_t beyond = to.seconds < from.seconds ? std::numeric_limits<std::int64_t>::min()
                                                        : std::numeric_limits<std::int64_t>::max();
  std::int64_t elapsed = 0;
  if (__builtin_sub_overflow(to.seconds, from.seconds, &elapsed) ||
      __builtin_mul_overflow(elapsed, second, &elapsed) ||
      __builtin_add_overflow(elapsed, std::int64_t{to.nanoseconds} - from.nanoseconds, &elapsed)) {
    return beyond;
  }
  return elapsed;
}

// Sums of times that many nodes share may be more than a number holds: then it is the largest one.
// Requires: no negative time.
inline std::int64_t bounded_sum(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<std::int64_t>::max() : sum;
}

// Byte counts wrap, as their differences in a file do.
inline std::int64_t wrapped_sum(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
inline std::int64_t wrapped_difference(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}

}  // namespace CT
