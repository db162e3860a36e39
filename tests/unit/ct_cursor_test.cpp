// SPDX-License-Identifier: MIT
#include "codetrace/bytes/ct_cursor.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <string_view>

namespace CT::Test {
namespace {

using Bytes = std::array<unsigned char, 12>;
constexpr Bytes bytes = {0x81, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C};

Cursor over(const Bytes& all, std::size_t size, bool big_endian) {
  return {all.data(), all.data() + size, big_endian};
}

TEST(Cursor, ReadsLittleEndianNumbers) {
  EXPECT_EQ(over(bytes, 12, false).u8(), 0x81);
  EXPECT_EQ(over(bytes, 12, false).u32(), 0x04030281U);
  EXPECT_EQ(over(bytes, 12, false).u64(), 0x0807060504030281U);
}

TEST(Cursor, ReadsBigEndianNumbers) {
  EXPECT_EQ(over(bytes, 12, true).u8(), 0x81);
  EXPECT_EQ(over(bytes, 12, true).u32(), 0x81020304U);
  EXPECT_EQ(over(bytes, 12, true).u64(), 0x8102030405060708U);
}

TEST(Cursor, ReadsSignedNumbersInTwosComplement) {
  Bytes ones;
  ones.fill(0xFF);
  for (const bool big_endian : {false, true}) {
    Cursor cursor = over(ones, 12, big_endian);
    EXPECT_EQ(cursor.i32(), -1);
    EXPECT_EQ(cursor.i64(), -1);
    EXPECT_TRUE(cursor.ok());
  }
  EXPECT_EQ(over(bytes, 12, true).i32(), -0x7EFDFCFC);
}

TEST(Cursor, ReadsDoublesInTheOrderOfTheIntegers) {
  const std::array<unsigned char, 8> big = {0x3F, 0xF8, 0, 0, 0, 0, 0, 0};
  const std::array<unsigned char, 8> little = {0, 0, 0, 0, 0, 0, 0xF8, 0x3F};
  EXPECT_EQ(Cursor(big.data(), big.data() + 8, true).f64(), 1.5);
  EXPECT_EQ(Cursor(little.data(), little.data() + 8, false).f64(), 1.5);
}

TEST(Cursor, EachReadStepsOverItsBytes) {
  Cursor cursor = over(bytes, 12, true);
  EXPECT_EQ(cursor.left(), 12U);
  cursor.u8();
  EXPECT_EQ(cursor.position(), bytes.data() + 1);
  cursor.u32();
  EXPECT_EQ(cursor.position(), bytes.data() + 5);
  EXPECT_EQ(cursor.bytes(3), bytes.data() + 5);
  EXPECT_EQ(cursor.position(), bytes.data() + 8);
  EXPECT_EQ(cursor.u32(), 0x090A0B0CU);
  EXPECT_EQ(cursor.left(), 0U);
  EXPECT_TRUE(cursor.ok());
}

TEST(Cursor, AFieldThatIsOneByteShortDoesNotMoveIt) {
  for (const bool big_endian : {false, true}) {
    Cursor four = over(bytes, 3, big_endian);
    EXPECT_EQ(four.u32(), 0U);
    EXPECT_FALSE(four.ok());
    EXPECT_EQ(four.position(), bytes.data());
    Cursor eight = over(bytes, 7, big_endian);
    EXPECT_EQ(eight.u64(), 0U);
    EXPECT_FALSE(eight.ok());
    EXPECT_EQ(eight.position(), bytes.data());
    EXPECT_EQ(eight.left(), 0U);
  }
}

TEST(Cursor, AFailureSticksThoughLaterFieldsWouldFit) {
  Cursor cursor = over(bytes, 7, false);
  cursor.u64();
  EXPECT_EQ(cursor.u8(), 0);
  EXPECT_EQ(cursor.u32(), 0U);
  EXPECT_EQ(cursor.i32(), 0);
  EXPECT_EQ(cursor.i64(), 0);
  EXPECT_EQ(cursor.f64(), 0.0);
  EXPECT_EQ(cursor.bytes(1), nullptr);
  EXPECT_EQ(cursor.bytes(0), nullptr);
  EXPECT_FALSE(cursor.ok());
  EXPECT_EQ(cursor.position(), bytes.data());
}

TEST(Cursor, ACopyDoesNotShareTheFailure) {
  Cursor cursor = over(bytes, 7, true);
  const Cursor before = cursor;
  cursor.u64();
  EXPECT_FALSE(cursor.ok());
  EXPECT_TRUE(before.ok());
}

TEST(Cursor, NoBytesCanBeAskedForAtTheEnd) {
  Cursor cursor = over(bytes, 12, true);
  cursor.bytes(12);
  EXPECT_EQ(cursor.bytes(0), bytes.data() + 12);
  EXPECT_TRUE(cursor.ok());
  EXPECT_EQ(cursor.u8(), 0);
  EXPECT_FALSE(cursor.ok());
}

TEST(Cursor, AHugeCountFails) {
  Cursor cursor = over(bytes, 12, true);
  EXPECT_EQ(cursor.bytes(std::numeric_limits<std::size_t>::max()), nullptr);
  EXPECT_FALSE(cursor.ok());
  EXPECT_EQ(cursor.position(), bytes.data());
  EXPECT_EQ(cursor.left(), 0U);
}

TEST(Cursor, OverARangeThatEndsBeforeItBeginsItHasFailed) {
  Cursor cursor(bytes.data() + 4, bytes.data() + 3, false);
  EXPECT_FALSE(cursor.ok());
  EXPECT_EQ(cursor.left(), 0U);
  EXPECT_EQ(cursor.bytes(0), nullptr);
  EXPECT_EQ(cursor.u8(), 0);
}

TEST(Cursor, OverNothingItHasFailed) {
  Cursor cursor;
  EXPECT_FALSE(cursor.ok());
  EXPECT_EQ(cursor.u64(), 0U);
  EXPECT_EQ(cursor.left(), 0U);
  EXPECT_FALSE(Cursor(nullptr, nullptr, true).ok());
}

constexpr std::uint64_t origin = 0x7F00'0000'0000;

const Section section(bytes.data(), bytes.size(), origin);

TEST(Section, TheOriginIsTheFirstByte) { EXPECT_EQ(section.resolve(origin), bytes.data()); }

TEST(Section, TheLastByteIsInsideAndTheNextIsNot) {
  EXPECT_EQ(section.resolve(origin + 11), bytes.data() + 11);
  EXPECT_EQ(section.resolve(origin + 12), nullptr);
}

TEST(Section, AReferenceBelowTheOriginIsOutside) {
  EXPECT_EQ(section.resolve(origin - 1), nullptr);
  EXPECT_EQ(section.resolve(1), nullptr);
}

TEST(Section, ZeroRefersToNothingEvenWhereTheOriginIsZero) {
  const Section at_zero(bytes.data(), bytes.size(), 0);
  EXPECT_EQ(at_zero.resolve(0), nullptr);
  EXPECT_EQ(at_zero.relocate(0), 0U);
  EXPECT_EQ(at_zero.resolve(1), bytes.data() + 1);
}

TEST(Section, WhatIsNeededMustBeWhollyInside) {
  EXPECT_EQ(section.resolve(origin, 12), bytes.data());
  EXPECT_EQ(section.resolve(origin, 13), nullptr);
  EXPECT_EQ(section.resolve(origin + 4, 8), bytes.data() + 4);
  EXPECT_EQ(section.resolve(origin + 5, 8), nullptr);
  EXPECT_EQ(section.resolve(origin + 5, std::numeric_limits<std::uint64_t>::max()), nullptr);
}

TEST(Section, DifferencesWrapAroundTheAddressSpace) {
  constexpr std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
  const Section at_the_top(bytes.data(), bytes.size(), last - 3);
  EXPECT_EQ(at_the_top.resolve(last), bytes.data() + 3);
  EXPECT_EQ(at_the_top.resolve(1), bytes.data() + 5);
  EXPECT_EQ(at_the_top.resolve(7), bytes.data() + 11);
  EXPECT_EQ(at_the_top.resolve(8), nullptr);
  // The byte at address 0 cannot be referred to.
  EXPECT_EQ(at_the_top.resolve(0), nullptr);
}

TEST(Section, AnEmptyOneResolvesNothing) {
  const Section empty(bytes.data(), 0, origin);
  EXPECT_EQ(empty.data(), nullptr);
  EXPECT_EQ(empty.end(), nullptr);
  EXPECT_EQ(empty.resolve(origin), nullptr);
  EXPECT_EQ(empty.resolve(origin, 0), nullptr);
  EXPECT_EQ(empty.relocate(origin), 0U);
  EXPECT_EQ(Section().size(), 0U);
}

TEST(Section, RelocatedAddressesMayLieOutside) {
  const auto start = std::bit_cast<std::uintptr_t>(bytes.data());
  EXPECT_EQ(section.relocate(origin + 3), start + 3);
  EXPECT_EQ(section.relocate(origin + 1000), start + 1000);
  EXPECT_EQ(section.relocate(origin - 1), start - 1);
  EXPECT_EQ(section.relocate(1), start + 1 - origin);
}

TEST(Section, ATextEndsAtItsNul) {
  constexpr std::string_view stored("ab\0cd\0", 6);
  const auto* place = static_cast<const unsigned char*>(static_cast<const void*>(stored.data()));
  const Section texts(place, stored.size(), origin);
  EXPECT_EQ(texts.text(place), "ab");
  EXPECT_EQ(texts.text(place + 1), "b");
  EXPECT_EQ(texts.text(place + 2), "");
  EXPECT_EQ(texts.text(place + 3), "cd");
  EXPECT_EQ(texts.text(place + 5), "");
}

TEST(Section, ATextWithoutNulEndsWithTheSection) {
  constexpr std::string_view stored("abc", 3);
  const auto* place = static_cast<const unsigned char*>(static_cast<const void*>(stored.data()));
  const Section texts(place, stored.size(), origin);
  EXPECT_EQ(texts.text(place), "abc");
  EXPECT_EQ(texts.text(place + 2), "c");
}

TEST(Section, ThereIsNoTextAtNull) { EXPECT_EQ(section.text(nullptr).data(), nullptr); }

}  // namespace
}  // namespace CT::Test
