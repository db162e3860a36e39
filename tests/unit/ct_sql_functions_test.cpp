// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "ctsql/ct_functions.h"
#include "open_sql.h"

namespace CT::Test {
namespace {

using testing::HasSubstr;

class SqlFunctions : public testing::Test {
 protected:
  SqlFunctions() : sql_(build_traces("startup @10\nshutdown @11\n").front().bytes) {}
  std::string value(const std::string& expression) { return sql_.rows("select " + expression); }

  OpenSql sql_;
};

TEST_F(SqlFunctions, RegexpFindsAPattern) {
  EXPECT_EQ(value("'str_replace' regexp '^str_'"), "1\n");
  EXPECT_EQ(value("'substr' regexp '^str_'"), "0\n");
  EXPECT_EQ(value("'SUBSTR' regexp '(?i)sub.tr$'"), "1\n");
  EXPECT_EQ(value("regexp('\\d+', 12345)"), "1\n");
  EXPECT_EQ(value("'gr\xC3\xBC\xC3\x9F' regexp '^gr..$'"), "1\n");
  EXPECT_EQ(value("null regexp 'a', 'a' regexp null"), "-|-\n");
  EXPECT_EQ(value("'' regexp ''"), "1\n");
  EXPECT_THAT(value("'a' regexp '('"), HasSubstr("error: regexp: "));
}

TEST_F(SqlFunctions, APatternMayChangeFromRowToRow) {
  EXPECT_EQ(sql_.rows("with t(x, p) as (values ('a', 'a'), ('a', 'b'), ('b', 'b')) "
                      "select x regexp p from t"),
            "1\n0\n1\n");
}

TEST_F(SqlFunctions, APatternThatTriesTooMuchIsAnError) {
  EXPECT_THAT(value("'" + std::string(60, 'a') + "b' regexp '(a+)+$'"),
              HasSubstr("error: regexp: the pattern takes too long"));
}

TEST_F(SqlFunctions, PlainTakesScalarsOutOfJson) {
  EXPECT_EQ(value("plain('null'), plain('true'), plain('false')"), "-|1|0\n");
  EXPECT_EQ(value("plain('12'), typeof(plain('12')), plain('-9223372036854775808')"),
            "12|integer|-9223372036854775808\n");
  EXPECT_EQ(value("plain('1.5e3'), typeof(plain('2.0')), typeof(plain('9223372036854775808'))"),
            "1500.0|real|real\n");
  EXPECT_EQ(value("plain('\"a\\\"\\\\\\/\\n\\u00e9\\ud83d\\ude00\"')"),
            "a\"\\/\n\xC3\xA9\xF0\x9F\x98\x80\n");
  EXPECT_EQ(value("plain('\"\"') = ''"), "1\n");
  EXPECT_EQ(value("plain('\"\\ud83dx\"') = char(65533) || 'x'"), "1\n");
}

TEST_F(SqlFunctions, PlainLeavesAlone) {
  for (const std::string text : {"[1]", "{\"a\":1}", "abc", "", "\"open", "\"a\"b", "-inf", "nan",
                                 "1x", "-", "+1", " 1", "\"\\x\"", "\"\\u12\""}) {
    EXPECT_EQ(value("plain('" + text + "') is '" + text + "'"), "1\n") << text;
  }
  EXPECT_EQ(value("plain(null), plain(1.5), hex(plain(x'00ff'))"), "-|1.5|00FF\n");
}

}  // namespace
}  // namespace CT::Test
