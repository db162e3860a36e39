// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_place_index.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <unordered_map>

namespace CT {
namespace {

// The number of a place, `next` if it is new.
std::uint32_t number_of(PlaceIndex& index, std::uint32_t place, std::uint32_t next) {
  const std::uint32_t known = index.find(place);
  if (known != PlaceIndex::none) return known;
  index.reserve_one();
  EXPECT_EQ(index.find(place), PlaceIndex::none);
  index.insert(place, next);
  return index.find(place);
}

TEST(PlaceIndex, ANewPlaceGetsTheNextNumberAndKeepsIt) {
  PlaceIndex index;
  EXPECT_EQ(number_of(index, 0, 0), 0U);
  EXPECT_EQ(number_of(index, 0xFFFFFFFF, 1), 1U);
  EXPECT_EQ(number_of(index, 0, 2), 0U);
  EXPECT_EQ(number_of(index, 0xFFFFFFFF, 2), 1U);
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
      ASSERT_EQ(number_of(index, place, next), number) << i << " of stride " << stride;
    }
  }
}

}  // namespace
}  // namespace CT
