// SPDX-License-Identifier: MIT
// A point in time as traces store it, and the distance between two of them.
//
// Plain values that own nothing. Both numbers may come from a damaged file: the nanoseconds can be
// a second or more, the seconds anything at all. Every pair has a defined distance; differences
// wrap.
#pragma once

#include <cmath>
#include <cstdint>

#include "k_export.h"

namespace KTime {

struct CODETRACE_EXPORT Timestamp {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;  // kept as stored, not brought below a second

  friend bool operator==(const Timestamp&, const Timestamp&) = default;
};

// Milliseconds from `earlier` to `later`, negative when they are the other way round.
inline double elapsed_ms(const Timestamp& earlier, const Timestamp& later) {
  constexpr std::int32_t second = 1'000'000'000;
  auto seconds = static_cast<std::int64_t>(static_cast<std::uint64_t>(later.seconds) -
                                           static_cast<std::uint64_t>(earlier.seconds));
  auto nanos = static_cast<std::int32_t>(later.nanoseconds - earlier.nanoseconds);
  // Borrow, so that both parts have the same sign.
  if (seconds >= 0 && nanos < 0) {
    seconds -= 1;
    nanos += second;
  }
  if (seconds < 0 && nanos >= 1) {
    seconds += 1;
    nanos -= second;
  }
  return std::fma(static_cast<double>(seconds), 1000.0, nanos / 1'000'000.0);
}

}  // namespace KTime
