// SPDX-License-Identifier: MIT
//
// The small parts of cttool: figures, tables, guesses, fields of CSV.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "ctexport/ct_csv_text.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_nearest.h"
#include "tools/cttool/ct_text_table.h"
#include "written.h"

namespace CT::Tool {
namespace {

TEST(Figures, TimesAreMilliseconds) {
  EXPECT_EQ(as_ms(0), "0.000");
  EXPECT_EQ(as_ms(499), "0.000");
  EXPECT_EQ(as_ms(500), "0.001");
  EXPECT_EQ(as_ms(1'234'567), "1.235");
  EXPECT_EQ(as_ms(61'000'000'000), "61000.000");
  EXPECT_EQ(as_ms(std::numeric_limits<std::int64_t>::max()), "9223372036854.776");
}

TEST(Figures, SharesOfNothingAreNothing) {
  EXPECT_EQ(as_percent(1, 3), "33.3 %");
  EXPECT_EQ(as_percent(5, 0), "0.0 %");
  EXPECT_EQ(as_percent(7, 7), "100.0 %");
}

TEST(Figures, CountsAreGrouped) {
  EXPECT_EQ(as_count(0), "0");
  EXPECT_EQ(as_count(999), "999");
  EXPECT_EQ(as_count(1000), "1,000");
  EXPECT_EQ(as_count(-123456), "-123,456");
  EXPECT_EQ(as_count(std::numeric_limits<std::int64_t>::min()), "-9,223,372,036,854,775,808");
}

TEST(Figures, BytesHaveTheUnitThatTheyFill) {
  EXPECT_EQ(as_bytes(0), "0 B");
  EXPECT_EQ(as_bytes(-1023), "-1023 B");
  EXPECT_EQ(as_bytes(1024), "1.0 KiB");
  EXPECT_EQ(as_bytes(-1536), "-1.5 KiB");
  EXPECT_EQ(as_bytes(std::int64_t{20} << 20), "20.0 MiB");
}

TEST(Figures, TimesAreReadWithTheirUnit) {
  EXPECT_EQ(parse_time("5ms"), 5'000'000);
  EXPECT_EQ(parse_time("5"), 5'000'000);
  EXPECT_EQ(parse_time("1.5 s"), 1'500'000'000);
  EXPECT_EQ(parse_time("250us"), 250'000);
  EXPECT_EQ(parse_time("250\xC2\xB5s"), 250'000);
  EXPECT_EQ(parse_time("90ns"), 90);
  for (const char* const bad :
       {"", ".", "ms", "5 m", "-5ms", "1e3ms", "1.2.3ms", "5msec", "99e99s"}) {
    EXPECT_FALSE(parse_time(bad)) << bad;
  }
  EXPECT_FALSE(parse_time("99999999999999999999s"));
}

TEST(TextTable, AlignsNumbersToTheRight) {
  TextTable table({{"calls", TextTable::Align::right}, {"name", TextTable::Align::left}});
  table.add({"1,234", "a"});
  table.add({"5", "Wörterbuch"});
  EXPECT_EQ(table.text(0), "calls  name\n1,234  a\n    5  Wörterbuch\n");
}

TEST(TextTable, CutsLinesToTheWidth) {
  TextTable table({{"n", TextTable::Align::right}, {"name", TextTable::Align::left}});
  table.add({"1", "äöüäöü"});
  EXPECT_EQ(table.text(6), "n  na…\n1  äö…\n");
  EXPECT_EQ(table.text(9), "n  name\n1  äöüäöü\n");
}

TEST(ShownText, CommandsNoTerminal) {
  EXPECT_EQ(shown_text("a\tb\r\n"), "a\\tb\\r\\n");
  EXPECT_EQ(shown_text(std::string_view("\x1B[31m\0", 6)), "\\x1b[31m\\x00");
  EXPECT_EQ(shown_text("\x7F\xC2\x9B"), "\\x7f\\x9b");
  EXPECT_EQ(shown_text("\xE2\x80\xAE"), "\\x202e");
  EXPECT_EQ(shown_text("\xFFж"), "\xEF\xBF\xBDж");
}

TEST(Guess, IsTheNearestWordIfOneIsNear) {
  EXPECT_EQ(guess("topp", {"top", "calls"}), "; did you mean top?");
  EXPECT_EQ(guess("cal", {"top", "calls"}), "; did you mean calls?");
  EXPECT_EQ(guess("--limt", {"--limit", "--min"}), "; did you mean --limit?");
  EXPECT_EQ(guess("zzzzzz", {"top", "calls"}), "");
  EXPECT_EQ(guess(std::string(100'000, 't'), {"top"}), "");
}

TEST(Csv, QuotesWhatMustBeQuoted) {
  const auto csv = [](std::string_view text) {
    return CT::Test::written([&](Writer& out) { Export::put_csv(out, text); });
  };
  EXPECT_EQ(csv("plain; text"), "plain; text");
  EXPECT_EQ(csv("a,b"), "\"a,b\"");
  EXPECT_EQ(csv("say \"hi\""), "\"say \"\"hi\"\"\"");
  EXPECT_EQ(csv("\""), "\"\"\"\"");
  EXPECT_EQ(csv("a\nb"), "\"a\nb\"");
  EXPECT_EQ(csv(""), "");
}

}  // namespace
}  // namespace CT::Tool
