// SPDX-License-Identifier: MIT
#include "kcommon/k_timestamp.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using KTime::elapsed_ms;

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();

TEST(ElapsedMs, IsZeroBetweenEqualTimes) {
  EXPECT_EQ(elapsed_ms({7, 123}, {7, 123}), 0.0);
  EXPECT_EQ(elapsed_ms({}, {}), 0.0);
}

TEST(ElapsedMs, AddsSecondsAndNanoseconds) { EXPECT_EQ(elapsed_ms({1, 0}, {3, 500'000}), 2000.5); }

TEST(ElapsedMs, BorrowsASecondWhenNanosecondsFall) {
  EXPECT_EQ(elapsed_ms({4, 900'000'000}, {5, 100'000'000}), 200.0);
}

TEST(ElapsedMs, IsNegativeWhenTheTimesAreTheOtherWayRound) {
  EXPECT_EQ(elapsed_ms({5, 100'000'000}, {4, 900'000'000}), -200.0);
  EXPECT_EQ(elapsed_ms({5, 0}, {4, 0}), -1000.0);
  EXPECT_EQ(elapsed_ms({5, 5'000'000}, {5, 0}), -5.0);
}

TEST(ElapsedMs, TakesNanosecondsOfMoreThanASecondAsTheyAre) {
  EXPECT_EQ(elapsed_ms({0, 0}, {0, 2'000'000'000}), 2000.0);
  EXPECT_EQ(elapsed_ms({0, 2'000'000'000}, {5, 0}), 3000.0);
}

TEST(ElapsedMs, ReadsTheNanosecondsDifferenceAsSigned32Bit) {
  // 4294967295 - 0 is -1.
  EXPECT_EQ(elapsed_ms({0, 0}, {2, std::numeric_limits<std::uint32_t>::max()}),
            std::fma(1.0, 1000.0, 999.999999));
}

TEST(ElapsedMs, WrapsTheSecondsDifference) {
  EXPECT_EQ(elapsed_ms({least, 0}, {most, 0}), -1000.0);
  EXPECT_EQ(elapsed_ms({most, 0}, {least, 0}), 1000.0);
  EXPECT_EQ(elapsed_ms({1, 0}, {least, 0}), static_cast<double>(most) * 1000.0);
  EXPECT_EQ(elapsed_ms({0, 0}, {least, 0}), static_cast<double>(least) * 1000.0);
}

TEST(ElapsedMs, RoundsOnceNotTwice) {
  // The product lies halfway between two doubles, so it would be rounded down before the half
  // millisecond that decides is added.
  EXPECT_EQ(elapsed_ms({0, 0}, {300'000'000'000'004, 500'000}), 300'000'000'000'004'032.0);
}

}  // namespace
