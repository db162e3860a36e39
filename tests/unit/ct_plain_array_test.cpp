// SPDX-License-Identifier: MIT
#include "codetrace/bytes/ct_plain_array.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace CT {
namespace {

void fill(PlainArray<int>& array, int count) {
  for (int i = 0; i < count; ++i) array.push_back(i);
}

TEST(PlainArray, IsEmptyAtFirst) {
  const PlainArray<int> array;
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(array.size(), 0U);
  EXPECT_EQ(array.begin(), array.end());
}

TEST(PlainArray, KeepsItsElementsWhileItGrows) {
  PlainArray<int> array;
  fill(array, 10'000);
  ASSERT_EQ(array.size(), 10'000U);
  std::vector<int> expected(10'000);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(std::vector<int>(array.begin(), array.end()), expected);
  EXPECT_EQ(*array.rbegin(), 9'999);
  EXPECT_EQ(array.rend() - array.rbegin(), 10'000);
}

TEST(PlainArray, IsShortenedFromItsEnd) {
  PlainArray<int> array;
  fill(array, 100);
  array.pop_back();
  EXPECT_EQ(array.back(), 98);
  array.truncate(10);
  EXPECT_EQ(array.size(), 10U);
  EXPECT_EQ(array.back(), 9);
  array.push_back(77);
  EXPECT_EQ(array[10], 77);
  array.clear();
  EXPECT_TRUE(array.empty());
}

TEST(PlainArray, TakesAnElementOfItsOwnWhileItGrows) {
  PlainArray<int> array;
  array.push_back(5);
  for (int i = 0; i < 1'000; ++i) array.push_back(array[0]);
  for (const int element : array) EXPECT_EQ(element, 5);
}

}  // namespace
}  // namespace CT
