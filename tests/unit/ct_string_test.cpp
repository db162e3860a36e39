// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_string.h"

#include <gtest/gtest.h>

#include <QJsonObject>
#include <limits>
#include <string>

#include "awkward.h"
#include "value_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

using Checkpoint::String;
using Form = JsonWriter::Form;

String string_of(std::string_view text, std::int32_t orig_sz = String::uncuttable) {
  return {text.data(), static_cast<std::uint32_t>(text.size()), orig_sz};
}

std::string as_text(const String& string) {
  return written([&](Writer& out) { string.write(out); });
}

std::string as_escaped(const String& string) {
  return written([&](Writer& out) { string.write_escaped(out); });
}

std::string as_dump(const String& string) {
  return written([&](Writer& out) { string.dump(out); });
}

std::string as_json(const String& string) {
  return written_json(Form::compact, [&](JsonWriter& out) { string.write_json(out); });
}

TEST(String, ACutOneIsMarkedInText) {
  EXPECT_EQ(as_text(string_of("abc", 10)), "abc**CUT**");
  EXPECT_EQ(as_escaped(string_of("a\tc", 10)), "a\\tc**CUT**");
  EXPECT_EQ(as_text(string_of("abc", 4)), "abc**CUT**");
  EXPECT_EQ(as_text(string_of("", 1)), "**CUT**");
}

TEST(String, AWholeOneIsNotMarked) {
  EXPECT_EQ(as_text(string_of("abc", 3)), "abc");
  EXPECT_EQ(as_text(string_of("abc", 2)), "abc");
  EXPECT_EQ(as_text(string_of("abc")), "abc");
}

TEST(String, AnOriginalSizeBelowZeroIsNeverCut) {
  constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
  EXPECT_FALSE(string_of("abc", lowest).is_cut());
  EXPECT_EQ(as_text(string_of("abc", lowest)), "abc");
  EXPECT_EQ(as_json(string_of("abc", lowest)), R"("abc")");
}

TEST(String, AnAbsentOneIsEmptyWhateverItsLength) {
  const String absent{nullptr, 100, String::uncuttable};
  EXPECT_TRUE(absent.is_empty());
  EXPECT_FALSE(absent.is_present());
  EXPECT_EQ(as_text(absent), "");
  EXPECT_EQ(as_json(absent), R"("")");
  EXPECT_EQ(absent.to_string(), QString());
}

TEST(String, OneThatBeginsWithNulIsNotPresent) {
  EXPECT_FALSE(string_of(std::string_view("\0ab", 3)).is_present());
  EXPECT_FALSE(string_of(std::string_view("\0ab", 3)).is_empty());
  EXPECT_FALSE(string_of("").is_present());
  EXPECT_TRUE(string_of("a").is_present());
}

TEST(String, JsonOfOneThatCouldBeCutIsAnObject) {
  EXPECT_EQ(as_json(string_of("abc", 10)), R"({"orig_sz":10,"string":"abc"})");
  EXPECT_EQ(as_json(string_of("abc", 3)), R"({"string":"abc"})");
  EXPECT_EQ(as_json(string_of("", 0)), R"({"string":""})");
}

TEST(String, JsonOfOneThatCannotBeCutIsAString) {
  EXPECT_EQ(as_json(string_of("a\"c")), R"("a\"c")");
}

TEST(String, EscapingLeavesTheBackslashAlone) {
  EXPECT_EQ(as_escaped(string_of("\t\n\r\"'\\")), R"(\t\n\r\"\'\)");
}

TEST(String, DumpShowsTheSizesOfOneThatCouldBeCut) {
  EXPECT_EQ(as_dump(string_of("abc")), "abc");
  EXPECT_EQ(as_dump(string_of("abc", 3)), R"([3:3] "abc")");
  EXPECT_EQ(as_dump(string_of("abc", 10)), R"([10:3] "abc**CUT**")");
}

TEST(String, AdaptersEqualTheWrittenForms) {
  Awkward random(1);
  for (std::size_t i = 0; i != 20'000; ++i) {
    const std::string bytes = random.bytes(4);
    const String string = string_of(bytes, static_cast<std::int32_t>(random.below(60)) - 20);
    const QString text = qt_text(bytes) + (string.is_cut() ? QStringLiteral("**CUT**") : QString());
    ASSERT_EQ(string.to_string(), text);
    ASSERT_EQ(as_text(string), text.toStdString());
    ASSERT_EQ(as_escaped(string), string.to_escaped_string().toStdString());
    for (const Form form : {Form::compact, Form::indented}) {
      ASSERT_EQ(written_element(form, [&](JsonWriter& out) { string.write_json(out); }),
                qt_element(form, string.as_json()));
    }
  }
}

class CutString : public ::testing::TestWithParam<ByteOrder> {};

INSTANTIATE_TEST_SUITE_P(BothOrders, CutString,
                         ::testing::Values(ByteOrder::little, ByteOrder::big));

TEST_P(CutString, HasItsStoredLengthAndItsOriginalSize) {
  ValueTrace trace(GetParam(), Fields().cut_string("0123456789", 100).raw("rest"));
  const String string = Checkpoint::get_cut_str(trace.cursor());
  EXPECT_EQ(string.view(), "0123456789");
  EXPECT_EQ(string.orig_sz, 100);
  EXPECT_EQ(trace.cursor().position(), trace.view().payload() + 4 + 4 + 10);
}

TEST_P(CutString, OfLengthZeroIsPresentAndEmpty) {
  ValueTrace trace(GetParam(), Fields().cut_string("").raw("rest"));
  const String string = Checkpoint::get_cut_str(trace.cursor());
  EXPECT_NE(string.data, nullptr);
  EXPECT_EQ(string.length, 0U);
  EXPECT_EQ(string.orig_sz, 0);
  EXPECT_EQ(trace.cursor().left(), 4U);
}

TEST_P(CutString, OfTheLowestSizeKeepsIt) {
  constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
  ValueTrace trace(GetParam(), Fields().i32(lowest).u32(2).raw("ab"));
  const String string = Checkpoint::get_cut_str(trace.cursor());
  EXPECT_EQ(string.view(), "ab");
  EXPECT_EQ(string.orig_sz, lowest);
}

TEST_P(CutString, ThatIsNotWholeIsAbsent) {
  const std::size_t size = 4 + 4 + 3;
  for (std::size_t keep = 1; keep != size; ++keep) {
    ValueTrace trace(GetParam(), Fields().cut_string("abc", 9), keep);
    const String string = Checkpoint::get_cut_str(trace.cursor());
    EXPECT_EQ(string.data, nullptr) << keep;
    EXPECT_EQ(string.orig_sz, String::uncuttable);
    EXPECT_FALSE(trace.cursor().ok());
  }
}

TEST_P(CutString, OfAHugeLengthIsAbsent) {
  for (const std::uint32_t length : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    ValueTrace trace(GetParam(), Fields().i32(-5).u32(length).raw("abc"));
    EXPECT_EQ(Checkpoint::get_cut_str(trace.cursor()).data, nullptr);
    EXPECT_FALSE(trace.cursor().ok());
  }
}

}  // namespace
}  // namespace CT::Test
