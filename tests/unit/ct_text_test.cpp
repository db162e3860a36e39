// SPDX-License-Identifier: MIT
//
// Texts are held equal to QString::fromUtf8, which defines how bad bytes show.
#include "codetrace/render/ct_text.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "awkward.h"
#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/qt/ct_text_qt.h"
#include "written.h"

namespace CT::Test {
namespace {

using namespace std::string_literals;

constexpr std::size_t rounds = 200'000;
const std::string mark = "\xEF\xBB\xBF";         // U+FEFF
const std::string replacement = "\xEF\xBF\xBD";  // U+FFFD

std::string as_text(std::string_view stored) {
  return written([&](Writer& out) { put_text(out, stored); });
}

std::string as_escaped(std::string_view stored) {
  return written([&](Writer& out) { put_escaped_text(out, stored); });
}

std::string as_json(std::string_view stored) {
  return written([&](Writer& out) { put_json_text(out, stored); });
}

std::string qt_escaped(std::string_view stored) {
  QString text = qt_text(stored);
  text.replace(QLatin1Char('\t'), QStringLiteral("\\t"));
  text.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
  text.replace(QLatin1Char('\r'), QStringLiteral("\\r"));
  text.replace(QLatin1Char('"'), QStringLiteral("\\\""));
  text.replace(QLatin1Char('\''), QStringLiteral("\\'"));
  return text.toStdString();
}

std::string qt_json(std::string_view stored) {
  constexpr std::size_t bracket_and_quote = 2;
  const std::string array = qt_element(JsonWriter::Form::compact, qt_text(stored));
  return array.substr(bracket_and_quote, array.size() - 2 * bracket_and_quote);
}

std::string hex(const std::string& bytes) {
  return QByteArray::fromStdString(bytes).toHex().toStdString();
}

// All three forms of one text; false, with a message, on the first difference.
::testing::AssertionResult equals_qt(const std::string& stored) {
  if (as_text(stored) != qt_text(stored).toUtf8().toStdString()) {
    return ::testing::AssertionFailure() << "text of " << hex(stored);
  }
  if (as_escaped(stored) != qt_escaped(stored)) {
    return ::testing::AssertionFailure() << "escaped text of " << hex(stored);
  }
  if (as_json(stored) != qt_json(stored)) {
    return ::testing::AssertionFailure() << "JSON of " << hex(stored);
  }
  return ::testing::AssertionSuccess();
}

std::string times(std::size_t count, const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i != count; ++i) result += text;
  return result;
}

TEST(Text, DropsOneLeadingByteOrderMark) {
  EXPECT_EQ(as_text(mark + "a"), "a");
  EXPECT_EQ(as_text(mark + mark + "a"), mark + "a");
  EXPECT_EQ(as_text("a" + mark + "d"), "a" + mark + "d");
  EXPECT_EQ(as_text(mark), "");
}

TEST(Text, EachByteOfABadSequenceIsOneReplacement) {
  const std::vector<std::pair<std::string, std::size_t>> rows = {{"\xEF\xBB", 2},
                                                                 {"\xE2\x82", 2},
                                                                 {"\xF0\x9F\x98", 3},
                                                                 {"\xC0\x80", 2},
                                                                 {"\xE0\x80\x80", 3},
                                                                 {"\xF0\x80\x80\x80", 4},
                                                                 {"\xED\xA0\x80", 3},
                                                                 {"\xED\xA0\xBD\xED\xB8\x80", 6},
                                                                 {"\xF4\x90\x80\x80", 4},
                                                                 {"\xF5\x80\x80\x80", 4},
                                                                 {"\xF8\x88\x80\x80\x80", 5}};
  for (const auto& [bytes, count] : rows) {
    EXPECT_EQ(as_text(bytes), times(count, replacement)) << hex(bytes);
    EXPECT_TRUE(equals_qt(bytes));
  }
  EXPECT_EQ(as_text("\xE2\x82\x41"), replacement + replacement + "A");
}

TEST(Text, NoncharactersAndNulPass) {
  for (const std::string& bytes : {"\xEF\xBF\xBE"s, "\xEF\xBF\xBF"s, "\xEF\xB7\x90"s, "a\0b"s}) {
    EXPECT_EQ(as_text(bytes), bytes);
    EXPECT_TRUE(equals_qt(bytes));
  }
}

TEST(Text, NothingAtNullIsEmpty) {
  EXPECT_EQ(as_text(std::string_view()), "");
  EXPECT_EQ(as_escaped(std::string_view()), "");
  EXPECT_EQ(as_json(std::string_view()), "");
}

TEST(Text, EqualsQtForAllTextsOfOneByte) {
  for (unsigned byte = 0; byte != 0x100; ++byte) {
    EXPECT_TRUE(equals_qt({static_cast<char>(byte)}));
  }
}

TEST(Text, EqualsQtForAllTextsOfTwoBytes) {
  for (unsigned bytes = 0; bytes != 0x10000; ++bytes) {
    ASSERT_TRUE(equals_qt({static_cast<char>(bytes >> 8), static_cast<char>(bytes & 0xFF)}));
  }
}

// Every lead and continuation byte at which the rules for sequences change.
TEST(Text, EqualsQtForAllTextsOfFourBytesAtTheEdgesOfTheRules) {
  constexpr std::array<unsigned char, 22> edges = {0x00, 0x22, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F,
                                                   0xA0, 0xBB, 0xBF, 0xC1, 0xC2, 0xDF, 0xE0, 0xED,
                                                   0xEF, 0xF0, 0xF4, 0xF5, 0xF8, 0xFF};
  std::string bytes(4, '\0');
  const std::size_t count = edges.size() * edges.size() * edges.size() * edges.size();
  for (std::size_t i = 0; i != count; ++i) {
    std::size_t left = i;
    for (char& byte : bytes) {
      byte = static_cast<char>(edges[left % edges.size()]);
      left /= edges.size();
    }
    ASSERT_EQ(as_text(bytes), qt_text(bytes).toStdString()) << hex(bytes);
  }
}

TEST(Text, EqualsQtForRandomTexts) {
  Awkward random(1);
  for (std::size_t i = 0; i != rounds; ++i) ASSERT_TRUE(equals_qt(random.bytes(6)));
}

TEST(Text, EqualsQtForRandomBytes) {
  Awkward random(2);
  for (std::size_t i = 0; i != rounds; ++i) {
    std::string bytes(random.below(24), '\0');
    for (char& byte : bytes) byte = static_cast<char>(random.bits());
    ASSERT_TRUE(equals_qt(bytes));
  }
}

// One odd piece at every place of a long text, so that it meets every edge of a block.
TEST(Text, EqualsQtForOddPiecesAtEveryPlaceOfALongText) {
  const std::vector<std::string> pieces = {
      "\"",          "'",    "\\",       "\n",       "\x1F",         "\x7F",
      "\0"s,         "\x80", "\xC3\xA4", "\xE2\x82", "\xEF\xBB\xBF", "\xF0\x9F\x98\x80",
      "\xF0\x9F\x98"};
  for (std::size_t size = 0; size != 50; ++size) {
    for (std::size_t place = 0; place <= size; ++place) {
      for (const std::string& piece : pieces) {
        std::string text(size, 'x');
        text.insert(place, piece);
        ASSERT_TRUE(equals_qt(text));
        ASSERT_TRUE(equals_qt(mark + text + piece));
      }
    }
  }
}

TEST(Text, EqualsQtForTextsLargerThanAnyBuffer) {
  Awkward random(3);
  std::string text;
  while (text.size() < 500'000) text += random.bytes(8) + std::string(random.below(3000), 'y');
  EXPECT_TRUE(equals_qt(text));
}

TEST(EscapedText, EscapesQuotesAndThreeControlsOnly) {
  EXPECT_EQ(as_escaped("\t\n\r\"'"), R"(\t\n\r\"\')");
  EXPECT_EQ(as_escaped("a\\b\b\f\x01\x7F"), "a\\b\b\f\x01\x7F");
}

TEST(JsonText, EscapesAsQtDoes) {
  EXPECT_EQ(as_json("\"\\\b\f\n\r\t"), R"(\"\\\b\f\n\r\t)");
  EXPECT_EQ(as_json("\0\x01\x1F\x7F/'"s), "\\u0000\\u0001\\u001f\x7F/'");
  EXPECT_EQ(as_json("\xE2\x80\xA8\xF0\x9F\x98\x80"), "\xE2\x80\xA8\xF0\x9F\x98\x80");
}

TEST(DecodesTo, IgnoresOneLeadingByteOrderMark) {
  EXPECT_TRUE(decodes_to("**CUT**", "**CUT**"));
  EXPECT_TRUE(decodes_to(mark + "**CUT**", "**CUT**"));
  EXPECT_FALSE(decodes_to(mark + mark + "**CUT**", "**CUT**"));
}

TEST(DecodesTo, ComparesTheWholeText) {
  EXPECT_FALSE(decodes_to("**CUT** ", "**CUT**"));
  EXPECT_FALSE(decodes_to("**CUT*", "**CUT**"));
  EXPECT_FALSE(decodes_to("**cut**", "**CUT**"));
  EXPECT_FALSE(decodes_to("**CUT**\0"s, "**CUT**"));
  EXPECT_FALSE(decodes_to("**CUT**\x80", "**CUT**"));
  EXPECT_FALSE(decodes_to("", "**CUT**"));
}

TEST(ToQString, GivesBackWhatFromUtf8Decoded) {
  Awkward random(4);
  for (std::size_t i = 0; i != 20'000; ++i) {
    const std::string stored = random.bytes(5);
    ASSERT_EQ(to_qstring(as_text(stored)), qt_text(stored)) << hex(stored);
  }
  EXPECT_EQ(to_qstring(as_text(mark + mark + mark + "a")), qt_text(mark + mark + mark + "a"));
}

}  // namespace
}  // namespace CT::Test
