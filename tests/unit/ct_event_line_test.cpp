// SPDX-License-Identifier: MIT
//
// The line of a user event, held to what QString::arg makes of it.
#include "codetrace/render/ct_event_line.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

#include "event_by_qt.h"
#include "written.h"

namespace CT::Test {
namespace {

Checkpoint::String as_stored(const std::string& text) {
  return {text.data(), static_cast<std::uint32_t>(text.size()), Checkpoint::String::uncuttable};
}

std::string line(const std::string& name, std::uint32_t sequence) {
  return written([&](Writer& out) { put_event_line(out, as_stored(name), sequence); });
}

TEST(EventLine, NamesTheEventAndItsNumber) {
  EXPECT_EQ(line("cache miss", 7), "(EVENT) Kelvo Monitor Event: cache miss. Event sequence: 7");
  EXPECT_EQ(line("", 0), "(EVENT) Kelvo Monitor Event: . Event sequence: 0");
}

TEST(EventLine, MarkersInTheNameTakePart) {
  const std::string head = "(EVENT) Kelvo Monitor Event: ";
  EXPECT_EQ(line("%1", 1234567), head + "1234567. Event sequence: %2");
  EXPECT_EQ(line("%2", 1234567), head + "1234567. Event sequence: 1234567");
  EXPECT_EQ(line("%0%1%2", 1234567), head + "1234567%1%2. Event sequence: %2");
  EXPECT_EQ(line("%1 and %01", 5), head + "5 and 5. Event sequence: %2");
  EXPECT_EQ(line("%%1%", 5), head + "%5%. Event sequence: %2");
  EXPECT_EQ(line("%10%99%3%l1%L%", 5), head + "%10%99%3%l1%L%. Event sequence: 5");
}

TEST(EventLine, DigitsOfAnyScriptMakeAMarker) {
  const std::string head = "(EVENT) Kelvo Monitor Event: ";
  EXPECT_EQ(line("%\xD9\xA1", 5), head + "5. Event sequence: %2");
  EXPECT_EQ(line("%\xEF\xBC\x91\xD9\xA1", 5), head + "%\xEF\xBC\x91\xD9\xA1. Event sequence: 5");
  // Of two UTF-16 code units, neither of which is a digit.
  EXPECT_EQ(line("%\xF0\x9D\x9F\x8F", 5), head + "%\xF0\x9D\x9F\x8F. Event sequence: 5");
}

// What markers are made of, and what could be taken for it: digits of other scripts, of one and of
// two UTF-16 code units, byte-order marks, bytes that are no text.
TEST(EventLine, IsWhatQtMakesOfAnyName) {
  const std::array<std::string, 14> pieces = {"%",
                                              "%",
                                              "%",
                                              "L",
                                              "0",
                                              "1",
                                              "2",
                                              "9",
                                              "a",
                                              "\xEF\xBB\xBF",
                                              "\xFF",
                                              "\xD9\xA1",
                                              "\xEF\xBC\x91",
                                              "\xF0\x9D\x9F\x8F"};
  std::mt19937 random(4711);
  for (int i = 0; i != 20000; ++i) {
    std::string name;
    const auto count = static_cast<unsigned>(random() % 9);
    for (unsigned piece = 0; piece != count; ++piece) name += pieces[random() % pieces.size()];
    const auto sequence = static_cast<std::uint32_t>(random());
    const QString name_by_qt = event_name_by_qt(name);
    if (!qt_knows_all_digits_of(name_by_qt)) continue;
    ASSERT_EQ(line(name, sequence), event_line_by_qt(name_by_qt, sequence))
        << testing::PrintToString(name);
  }
}

}  // namespace
}  // namespace CT::Test
