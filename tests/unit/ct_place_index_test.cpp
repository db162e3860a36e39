// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_place_index.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <unordered_map>

namespace CT {
namespace {

TEST(PlaceIndex, ANewPlaceGetsTheNextNumberAndKeepsIt) {
  PlaceIndex index;
  EXPECT_EQ(index.number(0, 0), 0U);
  EXPECT_EQ(index.number(0xFFFFFFFF, 1), 1U);
  EXPECT_EQ(index.number(0, 2), 0U);
  EXPECT_EQ(index.number(0xFFFFFFFF, 2), 1U);
}

// Places that lie close to each other, one beside the other, far apart.
TEST(PlaceIndex, NumbersLikeAPlainMapWhileItGrows) {
  for (const std::uint32_t stride : {1U, 7U, 8U, 4096U}) {
    std::mt19937 random(stride);
    std::unordered_map<std::uint32_t, std::uint32_t> expected;
    PlaceIndex index;
    for (int i = 0; i < 100'000; ++i) {
      const auto place = static_cast<std::uint32_t>(random() % 50'000) * stride;
      const auto next = static_cast<std::uint32_t>(expected.size());
      const std::uint32_t number = expected.try_emplace(place, next).first->second;
      ASSERT_EQ(index.number(place, next), number) << i << " of stride " << stride;
    }
  }
}

}  // namespace
}  // namespace CT
