// SPDX-License-Identifier: MIT
//
// Texts of queries that are alike come to one text, others do not.
#include "ctmeasure/ct_sql_text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

namespace CT::Test {
namespace {

TEST(LikeSql, HasNoTexts) {
  EXPECT_EQ(like_sql("select 'a'"), "select ?");
  EXPECT_EQ(like_sql("where a = 'it''s' and b = 'x\\'y' and c"), "where a = ? and b = ? and c");
  EXPECT_EQ(like_sql("values ('', 'a;b', N'x', X'1F', e'\\'')"), "values (?, ?, ?, ?, ?)");
  EXPECT_EQ(like_sql("select $$it's$$, $b$ $$ $b$"), "select ?, ?");
  EXPECT_EQ(like_sql("a = 'never ends"), "a = ?");
  EXPECT_EQ(like_sql("a = 'ends in \\"), "a = ?");
}

TEST(LikeSql, HasNoNumbers) {
  EXPECT_EQ(like_sql("limit 10 offset 2.5"), "limit ? offset ?");
  EXPECT_EQ(like_sql("a=0x1Fb, b=1e-5, c=.5, d=-7, e=+1.e+2"), "a=?, b=?, c=?, d=?, e=?");
  EXPECT_EQ(like_sql("a-1, b - 2, (3)-4"), "a-?, b - ?, (?)-?");
  EXPECT_EQ(like_sql("t1.c2 = 3"), "t1.c2 = ?");
}

TEST(LikeSql, HasOnePlaceholder) {
  EXPECT_EQ(like_sql("a = ? and b = :name and c = $12"), "a = ? and b = ? and c = ?");
  EXPECT_EQ(like_sql("a::int, @x := 5, @@y"), "a::int, @x := ?, @@y");
}

TEST(LikeSql, HasListsFolded) {
  const std::string folded = "a in (?...) and b";
  EXPECT_EQ(like_sql("a in (1) and b"), folded);
  EXPECT_EQ(like_sql("a in (1, 2,3) and b"), folded);
  EXPECT_EQ(like_sql("a in(?,?) and b"), "a in(?...) and b");
  EXPECT_EQ(like_sql("a in ( :x , 'y' ) and b"), folded);
  EXPECT_EQ(like_sql("a IN (1, f(2), 3)"), "a IN (?..., f(?), ?)");
  EXPECT_EQ(like_sql("a in (select 1)"), "a in (select ?)");
  EXPECT_EQ(like_sql("values (1, 2)"), "values (?, ?)");
  EXPECT_EQ(like_sql("a in (1"), "a in (?...");
}

TEST(LikeSql, HasNamesAsTheyAre) {
  EXPECT_EQ(like_sql("select `a 1`, \"b  '2'\", [c] from D"),
            "select `a 1`, \"b  '2'\", [c] from D");
  EXPECT_EQ(like_sql("select \"a\"\"b\" , `c``d`"), "select \"a\"\"b\", `c``d`");
  EXPECT_NE(like_sql("select a"), like_sql("select b"));
  EXPECT_EQ(like_sql("sélect ünï9"), "sélect ünï9");
}

TEST(LikeSql, HasNoCommentsAndOneBlank) {
  EXPECT_EQ(like_sql("  select\n\t a -- it's\n , b # c\n from /* 'x */ t ; "),
            "select a, b from t");
  EXPECT_EQ(like_sql("a #>> b"), "a #>> b");
  EXPECT_EQ(like_sql("a /* never ends"), "a");
  EXPECT_EQ(like_sql("-- only"), "");
  EXPECT_EQ(like_sql(""), "");
}

TEST(LikeSql, SaysThatATextWasCut) {
  EXPECT_EQ(like_sql("select a from t where b = 'x", true), "select a from t where b = ?**CUT**");
  EXPECT_NE(like_sql("select a", true), like_sql("select a", false));
}

TEST(LikeSql, TakesAnyBytes) {
  std::mt19937 random(5);
  constexpr std::string_view letters = "'\"`\\$?:@-+#/*().,;0x1e in\n\x01\x80";
  for (int run = 0; run != 20000; ++run) {
    std::string text;
    for (std::size_t i = random() % 30; i != 0; --i) text += letters[random() % letters.size()];
    const std::string like = like_sql(text);
    EXPECT_LE(like.size(), 4 * text.size()) << text;
  }
}

}  // namespace
}  // namespace CT::Test
