// SPDX-License-Identifier: MIT
//
// Sections share a page.
#include "tools/cttool/ct_summary_page.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/cttool/ct_text_table.h"

namespace CT::Test {
namespace {

using Tool::page_of;
using Tool::SectionText;

SectionText section(const std::string& title, std::size_t lines, std::size_t least) {
  SectionText text;
  text.title = title;
  for (std::size_t i = 0; i != lines; ++i) {
    std::string line = title;
    line += std::to_string(i);
    text.lines.push_back(std::move(line));
  }
  text.least = least;
  text.more = "cttool see";
  return text;
}

TEST(SummaryPage, LeavesOutWhatHasNoLines) {
  EXPECT_EQ(page_of({section("", 1, 1), section("a", 0, 1), section("b", 1, 1)}, {60, 80}),
            "0\n\nb\nb0\n");
}

TEST(SummaryPage, TakesFromWhatHasMostToSpare) {
  EXPECT_EQ(page_of({section("a", 3, 1), section("b", 4, 1)}, {9, 80}),
            "\na … 1 more: cttool see\na0\na1\n\nb … 1 more: cttool see\nb0\nb1\nb2\n");
}

TEST(SummaryPage, KeepsLinesTogether) {
  SectionText pairs = section("p", 4, 2);
  pairs.lines_each = 2;
  EXPECT_EQ(page_of({pairs, section("b", 2, 2)}, {8, 80}),
            "\np … 1 more: cttool see\np0\np1\n\nb\nb0\nb1\n");
}

TEST(SummaryPage, KeepsToItsColumns) {
  SectionText wide = section("a title that is long", 2, 1);
  wide.left_out = 3;
  EXPECT_EQ(page_of({wide}, {60, 14}),
            "\na title that …\na title that …\na title that …\n  … 3 more: c…\n");
}

TEST(SummaryPage, StaysWholeWhereNothingCanGo) {
  const std::string page = page_of({section("a", 4, 4)}, {3, 80});
  EXPECT_EQ(page, "\na\na0\na1\na2\na3\n");
}

TEST(SummaryPage, NamesAreCutInFront) {
  EXPECT_EQ(Tool::end_of("/a/b.php", 8), "/a/b.php");
  EXPECT_EQ(Tool::end_of("/srv/app/inc/Item.php", 12), "…/Item.php");
  EXPECT_EQ(Tool::end_of("abcdefghijkl", 5), "…ijkl");
  EXPECT_EQ(Tool::end_of("ÄÖÜäöü", 3), "…öü");
}

}  // namespace
}  // namespace CT::Test
