// SPDX-License-Identifier: MIT
#include "ct_place_index.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

namespace CT {
namespace {

TEST(PlaceIndex, ANewPlaceGetsTheNextNumberAndKeepsIt) {
  const std::array<char, 2> places{};
  PlaceIndex index;
  EXPECT_EQ(index.number(&places[0], 0), 0U);
  EXPECT_EQ(index.number(&places[1], 1), 1U);
  EXPECT_EQ(index.number(&places[0], 2), 0U);
  EXPECT_EQ(index.number(&places[1], 2), 1U);
}

TEST(PlaceIndex, NumbersLikeAPlainMapWhileItGrows) {
  std::mt19937 random(1);
  const std::vector<char> section(100'000);
  std::unordered_map<const char*, std::uint32_t> expected;
  PlaceIndex index;
  for (int i = 0; i < 200'000; ++i) {
    const char* place = &section[random() % section.size()];
    const auto next = static_cast<std::uint32_t>(expected.size());
    const std::uint32_t number = expected.try_emplace(place, next).first->second;
    ASSERT_EQ(index.number(place, next), number) << i;
  }
}

TEST(PlaceIndex, NumbersPlacesThatAreFarApart) {
  constexpr std::size_t stride = 4096;
  const std::vector<char> section(1024 * stride);
  PlaceIndex index;
  for (int round = 0; round < 2; ++round) {
    for (std::uint32_t i = 0; i < 1024; ++i) ASSERT_EQ(index.number(&section[i * stride], i), i);
  }
}

}  // namespace
}  // namespace CT
