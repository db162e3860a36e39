// SPDX-License-Identifier: MIT
//
// Doubles are held equal to Qt, which defines their forms; the rows are what Qt 6.4 prints.
#include "codetrace/render/ct_number.h"

#include <gtest/gtest.h>

#include <QTextStream>
#include <bit>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "awkward.h"
#include "written.h"

namespace CT::Test {
namespace {

constexpr std::size_t rounds = 200'000;
constexpr double infinity = std::numeric_limits<double>::infinity();

std::string as_text(double value) {
  return written([&](Writer& out) { put_double_text(out, value); });
}

std::string as_json(double value) {
  return written([&](Writer& out) { put_double_json(out, value); });
}

std::string qt_number(double value) { return QString::number(value, 'g', 6).toStdString(); }

std::string qt_json(double value) {
  const std::string array = qt_element(JsonWriter::Form::compact, value);
  return array.substr(1, array.size() - 2);
}

std::string decimal(Awkward& random) {
  std::string text = random.one_in(2) ? "-" : "";
  for (std::size_t i = 1 + random.below(9); i != 0; --i) {
    text += static_cast<char>('0' + random.below(10));
  }
  text += '.';
  for (std::size_t i = 1 + random.below(9); i != 0; --i) {
    text += static_cast<char>('0' + random.below(10));
  }
  if (random.one_in(2)) text += 'e' + std::to_string(static_cast<int>(random.below(40)) - 20);
  return text;
}

// A number whose exact decimal value has seven significant digits, of which the last is a 5: an odd
// multiple of 2^-k with 7 - k digits before the point, or six digits and a half times 10^k.
double tie(Awkward& random) {
  const double sign = random.one_in(2) ? 1 : -1;
  if (random.one_in(2)) {
    const auto half = static_cast<double>(100'000 + random.below(900'000)) + 0.5;
    return sign * half * std::pow(10.0, static_cast<double>(random.below(14)));
  }
  const auto k = static_cast<double>(1 + random.below(8));
  const auto least = static_cast<std::size_t>(1e6 / std::pow(5.0, k));
  const auto odd = static_cast<double>((least + random.below(9 * least)) | 1U);
  return sign * odd / std::pow(2.0, k);
}

TEST(DoubleText, EqualsQtForRandomBitPatterns) {
  Awkward random(1);
  for (std::size_t i = 0; i != rounds; ++i) {
    const auto value = std::bit_cast<double>(random.bits());
    ASSERT_EQ(as_text(value), qt_number(value)) << std::bit_cast<std::uint64_t>(value);
  }
}

TEST(DoubleText, EqualsQtForRandomDecimals) {
  Awkward random(2);
  for (std::size_t i = 0; i != rounds; ++i) {
    const std::string text = decimal(random);
    const double value = std::stod(text);
    ASSERT_EQ(as_text(value), qt_number(value)) << text;
  }
}

TEST(DoubleText, EqualsQtForExactTies) {
  Awkward random(3);
  for (std::size_t i = 0; i != rounds; ++i) {
    const double value = tie(random);
    ASSERT_EQ(as_text(value), qt_number(value)) << std::bit_cast<std::uint64_t>(value);
    const double above = std::nextafter(value, infinity);
    ASSERT_EQ(as_text(above), qt_number(above)) << std::bit_cast<std::uint64_t>(above);
    const double below = std::nextafter(value, -infinity);
    ASSERT_EQ(as_text(below), qt_number(below)) << std::bit_cast<std::uint64_t>(below);
  }
}

TEST(DoubleText, EqualsQtForAwkwardValues) {
  Awkward random(4);
  for (std::size_t i = 0; i != rounds; ++i) {
    const double value = random.real();
    ASSERT_EQ(as_text(value), qt_number(value)) << std::bit_cast<std::uint64_t>(value);
  }
}

TEST(DoubleText, ExactTiesRoundAwayFromZero) {
  const std::vector<std::pair<double, const char*>> rows = {
      {100000.5, "100001"},   {12345.25, "12345.3"},   {123456.5, "123457"},
      {-100000.5, "-100001"}, {-12345.25, "-12345.3"}, {999999.5, "1e+06"}};
  for (const auto& [value, text] : rows) {
    EXPECT_EQ(as_text(value), text);
    EXPECT_EQ(qt_number(value), text);
  }
}

TEST(DoubleText, HasTheFormsOfQt) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<std::pair<double, const char*>> rows = {
      {-0.0, "0"},        {0.0, "0"},
      {nan, "nan"},       {-nan, "nan"},
      {infinity, "inf"},  {-infinity, "-inf"},
      {200.0, "200"},     {1e20, "1e+20"},
      {1e-5, "1e-05"},    {0.0001, "0.0001"},
      {1.5, "1.5"},       {5e-324, "4.94066e-324"},
      {0.1, "0.1"},       {123456789.0, "1.23457e+08"},
      {1e100, "1e+100"},  {-1e-100, "-1e-100"},
      {999999, "999999"}, {1000000, "1e+06"}};
  for (const auto& [value, text] : rows) {
    EXPECT_EQ(as_text(value), text);
    EXPECT_EQ(qt_number(value), text);
  }
}

TEST(DoubleText, TwoDoublesMayLookAlike) { EXPECT_EQ(as_text(1.0000001), as_text(1.0000002)); }

TEST(DoubleJson, EqualsQtForRandomBitPatterns) {
  Awkward random(5);
  for (std::size_t i = 0; i != rounds; ++i) {
    const auto value = std::bit_cast<double>(random.bits());
    ASSERT_EQ(as_json(value), qt_json(value)) << std::bit_cast<std::uint64_t>(value);
  }
}

TEST(DoubleJson, EqualsQtForRandomDecimals) {
  Awkward random(6);
  for (std::size_t i = 0; i != rounds; ++i) {
    const std::string text = decimal(random);
    const double value = std::stod(text);
    ASSERT_EQ(as_json(value), qt_json(value)) << text;
  }
}

TEST(DoubleJson, EqualsQtForExactTies) {
  Awkward random(7);
  for (std::size_t i = 0; i != rounds; ++i) {
    const double value = tie(random);
    ASSERT_EQ(as_json(value), qt_json(value)) << std::bit_cast<std::uint64_t>(value);
  }
}

TEST(DoubleJson, EqualsQtForAwkwardValues) {
  Awkward random(8);
  for (std::size_t i = 0; i != rounds; ++i) {
    const double value = random.real();
    ASSERT_EQ(as_json(value), qt_json(value)) << std::bit_cast<std::uint64_t>(value);
  }
}

// Times and sizes: whole numbers of small decimal units, and their neighbours.
TEST(DoubleJson, EqualsQtForShortDecimalsAndTheirNeighbours) {
  Awkward random(9);
  for (std::size_t i = 0; i != rounds; ++i) {
    const double unit = std::pow(10.0, static_cast<double>(random.below(10)));
    const double value = static_cast<double>(random.bits() >> (10 + random.below(54))) / unit;
    ASSERT_EQ(as_json(value), qt_json(value)) << std::bit_cast<std::uint64_t>(value);
    const double next = std::nextafter(value, infinity);
    ASSERT_EQ(as_json(next), qt_json(next)) << std::bit_cast<std::uint64_t>(next);
  }
}

TEST(DoubleJson, HasTheFormsOfQt) {
  const std::vector<std::pair<double, const char*>> rows = {
      {200.0, "200"},
      {1e15, "1000000000000000"},
      {9007199254740992.0, "9007199254740992"},
      {-9007199254740992.0, "-9007199254740992"},
      {1e16, "1e+16"},
      {1.1e16, "1.1e+16"},
      {1e18, "1e+18"},
      {9.2e18, "9.2e+18"},
      {9223372036854775808.0, "9223372036854776000"},
      {18446744073709551616.0, "18446744073709552000"},
      {-18446744073709551616.0, "-18446744073709552000"},
      {1.2345678901234567e21, "1234567890123456800000"},
      {1.2345678901234567e22, "1.2345678901234568e+22"},
      {0.0001, "1e-04"},
      {0.0002, "2e-04"},
      {0.0005, "5e-04"},
      {0.001, "0.001"},
      {0.00012, "0.00012"},
      {1e-05, "1e-05"},
      {1.2345e-05, "1.2345e-05"},
      {0.1 + 0.2, "0.30000000000000004"},
      {1e15 + 0.5, "1000000000000000.5"},
      {1e20, "1e+20"},
      {1e23, "1e+23"},
      {5e-324, "5e-324"},
      {-0.0, "0"},
      {infinity, "null"},
      {-infinity, "null"},
      {std::numeric_limits<double>::quiet_NaN(), "null"}};
  for (const auto& [value, text] : rows) {
    EXPECT_EQ(as_json(value), text);
    EXPECT_EQ(qt_json(value), text);
  }
}

TEST(Integers, PrintExactly) {
  const auto number = [](std::int64_t value) {
    return written([&](Writer& out) { put_signed(out, value); });
  };
  EXPECT_EQ(number(0), "0");
  EXPECT_EQ(number(-5), "-5");
  EXPECT_EQ(number(9007199254740993), "9007199254740993");
  EXPECT_EQ(number(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
  EXPECT_EQ(number(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(written([](Writer& out) { put_unsigned(out, ~std::uint64_t{0}); }),
            "18446744073709551615");
}

TEST(Integers, OfEachLengthPrintExactly) {
  for (std::uint64_t power = 1; power <= 1'000'000'000'000'000'000; power *= 10) {
    for (const std::uint64_t value : {power - 1, power, power + 1, 7 * power, 10 * (power - 1)}) {
      EXPECT_EQ(written([&](Writer& out) { put_unsigned(out, value); }), std::to_string(value));
    }
  }
  Awkward random(11);
  for (std::size_t i = 0; i != rounds; ++i) {
    const auto value = static_cast<std::int64_t>(random.bits()) >> random.below(64);
    ASSERT_EQ(written([&](Writer& out) { put_signed(out, value); }), std::to_string(value));
  }
}

TEST(Pointer, EqualsQTextStream) {
  Awkward random(10);
  std::vector<std::uint64_t> addresses = {0, 1, 9, 10, 15, 16, 0xABCDEF, ~std::uint64_t{0}};
  for (std::size_t i = 0; i != 1000; ++i) addresses.push_back(random.bits() >> random.below(64));
  for (const std::uint64_t address : addresses) {
    QString expected;
    QTextStream(&expected) << std::bit_cast<const void*>(std::uintptr_t{address});
    EXPECT_EQ(written([&](Writer& out) { put_pointer(out, address); }), expected.toStdString());
  }
}

std::string timestamp(std::int64_t seconds, std::uint32_t nanoseconds) {
  return written([&](Writer& out) { put_timestamp(out, {seconds, nanoseconds}); });
}

TEST(Timestamp, RoundsHalfUpToMicroseconds) {
  EXPECT_EQ(timestamp(12, 0), "12.000000");
  EXPECT_EQ(timestamp(12, 499), "12.000000");
  EXPECT_EQ(timestamp(12, 500), "12.000001");
  EXPECT_EQ(timestamp(12, 1499), "12.000001");
  EXPECT_EQ(timestamp(12, 1500), "12.000002");
  EXPECT_EQ(timestamp(12, 123456789), "12.123457");
  EXPECT_EQ(timestamp(12, 999999499), "12.999999");
}

TEST(Timestamp, TheCarryStopsAtSevenDigits) {
  EXPECT_EQ(timestamp(12, 999999500), "12.1000000");
  EXPECT_EQ(timestamp(12, 999999600), "12.1000000");
  EXPECT_EQ(timestamp(12, 999999999), "12.1000000");
}

TEST(Timestamp, SecondsAreSigned) {
  EXPECT_EQ(timestamp(-1, 5000), "-1.000005");
  EXPECT_EQ(timestamp(std::numeric_limits<std::int64_t>::min(), 0), "-9223372036854775808.000000");
}

TEST(Timestamp, NanosecondsBeyondASecondAreTakenAsSigned) {
  EXPECT_EQ(timestamp(0, 1'000'000'000), "0.1000000");
  EXPECT_EQ(timestamp(0, 0x7FFFFFFF), "0.2147484");
  EXPECT_EQ(timestamp(0, 0x80000000), "0.-2147483");
  EXPECT_EQ(timestamp(0, 0xFFFFFFFF), "0.000000");
  EXPECT_EQ(timestamp(0, static_cast<std::uint32_t>(-5000)), "0.-00005");
}

}  // namespace
}  // namespace CT::Test
