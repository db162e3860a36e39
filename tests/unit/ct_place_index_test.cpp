// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_place_index.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

namespace CT {
namespace {

using Index = PlaceIndex<int>;

// The entry of a place, `next` if the place is new.
const int* entry_of(Index& index, std::uint32_t place, const int& next) {
  if (const int* known = index.find(place); known != nullptr) return known;
  index.reserve_one();
  EXPECT_EQ(index.find(place), nullptr);
  index.insert(place, next);
  return index.find(place);
}

TEST(PlaceIndex, ANewPlaceGetsItsEntryAndKeepsIt) {
  const int entries[3] = {};
  Index index;
  EXPECT_EQ(index.find(0), nullptr);
  EXPECT_EQ(entry_of(index, 0, entries[0]), &entries[0]);
  EXPECT_EQ(entry_of(index, 0xFFFFFFFF, entries[1]), &entries[1]);
  EXPECT_EQ(entry_of(index, 0, entries[2]), &entries[0]);
  EXPECT_EQ(entry_of(index, 0xFFFFFFFF, entries[2]), &entries[1]);
}

// Places that lie close to each other, one beside the other, far apart.
TEST(PlaceIndex, FindsLikeAPlainMapWhileItGrows) {
  const std::vector<int> entries(50'000);
  for (const std::uint32_t stride : {1U, 7U, 8U, 4096U}) {
    std::mt19937 random(stride);
    std::unordered_map<std::uint32_t, const int*> expected;
    Index index;
    for (int i = 0; i < 100'000; ++i) {
      const auto place = static_cast<std::uint32_t>(random() % 50'000) * stride;
      const int& next = entries[expected.size() % entries.size()];
      const int* entry = expected.try_emplace(place, &next).first->second;
      ASSERT_EQ(entry_of(index, place, next), entry) << i << " of stride " << stride;
    }
  }
}

}  // namespace
}  // namespace CT
