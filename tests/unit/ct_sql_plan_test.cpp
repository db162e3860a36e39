// SPDX-License-Identifier: MIT
//
// How queries are answered: which rows are looked at, and that the short ways give what the long
// way over all rows gives.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ctsql/ct_plan.h"
#include "open_sql.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

using testing::HasSubstr;

// Node 1 is a call of `main` with 50 calls under it: of `even` and `odd` in turn, each with a call
// of `inner` in it.
std::string many_calls() {
  std::string text =
      "M: function user \"main\"\n"
      "E: function user \"even\"\n"
      "O: function user \"odd\"\n"
      "O2: function user \"odd\" line 9\n"
      "I: function internal \"inner\"\n"
      "startup @10\n"
      "m: call @10 fn M\n";
  for (int i = 0; i != 50; ++i) {
    const std::string number = std::to_string(i);
    const char* function = i % 2 == 0 ? "E" : i < 25 ? "O" : "O2";
    text += "c" + number + ": call fn " + function + "\n";
    text += "i" + number + ": call fn I\n";
    text += "return of i" + number + "\nreturn of c" + number + "\n";
  }
  text += "return @20 of m\nshutdown @20\n";
  return build_traces(text).front().bytes;
}

class SqlPlan : public testing::Test {
 protected:
  SqlPlan() : sql_(many_calls()) {}

  std::string plan(const std::string& query) { return sql_.rows("explain query plan " + query); }

  OpenSql sql_;
};

TEST_F(SqlPlan, AllRowsAreCountedOnce) {
  EXPECT_EQ(sql_.rows("select count(*) from calls"), "101\n");
  EXPECT_EQ(sql_.touched("select count(*) from calls"), 101U);
  EXPECT_EQ(sql_.touched("select count(*) from nodes"), 102U);
}

TEST_F(SqlPlan, OneId) {
  EXPECT_EQ(sql_.rows("select name from calls where id = 2"), "even\n");
  EXPECT_EQ(sql_.touched("select name from calls where id = 2"), 1U);
  EXPECT_EQ(sql_.touched("select name from calls where rowid = 2"), 1U);
  EXPECT_EQ(sql_.touched("select name from calls where id in (2, 5, 9, 2)"), 3U);
  EXPECT_EQ(sql_.touched("select name from calls where id = 0"), 0U);
  EXPECT_EQ(sql_.touched("select name from functions where id = 3"), 1U);
  EXPECT_THAT(plan("select * from calls where id = 2"), HasSubstr(":one id"));
}

TEST_F(SqlPlan, ARangeOfIds) {
  EXPECT_EQ(sql_.touched("select * from calls where id between 3 and 5"), 3U);
  EXPECT_EQ(sql_.touched("select * from calls where id > 3 and id < 6"), 2U);
  EXPECT_EQ(sql_.touched("select * from calls where id >= 99"), 3U);
  EXPECT_EQ(sql_.touched("select * from calls where id < 3"), 2U);
  EXPECT_EQ(sql_.touched("select * from calls where id > 5 and id < 5"), 0U);
  EXPECT_EQ(sql_.touched("select * from calls where id between 3 and 5 order by id"), 3U);
  EXPECT_THAT(plan("select * from calls where id between 3 and 5 order by id"),
              testing::AllOf(HasSubstr(":range of ids"), Not(HasSubstr("ORDER BY"))));
}

TEST_F(SqlPlan, ChildrenCostWhatTheyAre) {
  EXPECT_EQ(sql_.rows("select count(*) from calls where parent = 1"), "50\n");
  EXPECT_EQ(sql_.touched("select count(*) from calls where parent = 1"), 50U);
  EXPECT_EQ(sql_.touched("select count(*) from calls where parent = 2"), 1U);
  EXPECT_EQ(sql_.touched("select count(*) from nodes where parent = 0"), 1U);
  EXPECT_EQ(sql_.touched("select count(*) from calls where parent = 3"), 0U);
  // Each call once, and its children.
  EXPECT_EQ(sql_.touched("select count(*) from calls a join calls b on b.parent = a.id "
                         "where a.name = 'even'"),
            50U);
}

TEST_F(SqlPlan, CallsOfOneFunctionOrName) {
  EXPECT_EQ(sql_.rows("select count(*) from calls where name = 'odd'"), "25\n");
  EXPECT_EQ(sql_.touched("select count(*) from calls where name = 'odd'"), 25U);
  EXPECT_EQ(sql_.touched("select count(*) from calls where name = 'Odd'"), 0U);
  EXPECT_EQ(sql_.touched("select count(*) from calls where function = 1"), 25U);
  EXPECT_EQ(sql_.touched("select count(*) from functions where name = 'odd'"), 2U);
  EXPECT_EQ(sql_.touched("select count(*) from calls where name = 'odd' and id < 20"), 4U);
  // Another collation is not that of the names' order.
  EXPECT_EQ(sql_.touched("select count(*) from calls where name = 'ODD' collate nocase"), 101U);
  EXPECT_EQ(sql_.rows("select count(*) from calls where name = 'ODD' collate nocase"), "25\n");
}

TEST_F(SqlPlan, GroupsComeTogether) {
  const std::string by_name = "select name, count(*) from calls group by name";
  EXPECT_EQ(sql_.rows(by_name), "even|25\ninner|50\nmain|1\nodd|25\n");
  EXPECT_EQ(sql_.touched(by_name), 101U);
  EXPECT_THAT(plan(by_name),
              testing::AllOf(HasSubstr(":all calls by name"), Not(HasSubstr("TEMP B-TREE"))));
  const std::string by_function = "select function, name, count(*) from calls group by 1, 2";
  EXPECT_THAT(plan(by_function),
              testing::AllOf(HasSubstr(":all calls by function"), Not(HasSubstr("TEMP B-TREE"))));
  EXPECT_THAT(plan("select name from calls order by name desc"), HasSubstr("TEMP B-TREE"));
  EXPECT_THAT(plan("select name from calls order by id, name"), Not(HasSubstr("TEMP B-TREE")));
  EXPECT_THAT(plan("select name from calls order by function, id"), Not(HasSubstr("TEMP B-TREE")));
  EXPECT_THAT(plan("select name from calls order by name, function, id"),
              Not(HasSubstr("TEMP B-TREE")));
  EXPECT_THAT(plan("select name from calls order by name, id"), HasSubstr("TEMP B-TREE"));
}

// Each query is run as it stands, and over a copy of the table that has no short ways.
void expect_same(OpenSql& sql, const std::string& table, const std::string& rest) {
  const std::string direct = "select * from " + table + " t " + rest;
  const std::string slow =
      "with t as materialized (select * from " + table + ") select * from t " + rest;
  EXPECT_EQ(sql.rows(direct), sql.rows(slow)) << direct;
}

const std::vector<std::string>& values() {
  static const std::vector<std::string> all = {"0",
                                               "1",
                                               "2",
                                               "5",
                                               "-1",
                                               "1.0",
                                               "2.5",
                                               "-0.5",
                                               "'2'",
                                               "'2.0'",
                                               "' 2'",
                                               "'x'",
                                               "''",
                                               "x'32'",
                                               "null",
                                               "1e300",
                                               "-1e300",
                                               "9223372036854775807",
                                               "-9223372036854775808",
                                               "2147483648",
                                               "4294967297",
                                               "1e19",
                                               "(select 3)",
                                               "9e999",
                                               "-9e999"};
  return all;
}

void compare(OpenSql& sql) {
  for (const std::string table : {"nodes", "calls", "includes", "writes", "headers", "functions"}) {
    std::vector<std::string> keys = {"id"};
    if (table != "functions") keys.push_back("parent");
    if (table == "calls") keys.push_back("function");
    if (table == "calls" || table == "functions") keys.push_back("name");
    for (const std::string& key : keys) {
      for (const std::string& value : values()) {
        for (const std::string op : {" = ", " < ", " <= ", " > ", " >= ", " is ", " <> "}) {
          expect_same(sql, table, "where " + key + op + value + " order by id");
        }
        expect_same(sql, table, "where " + value + " < id and id <= 7.5 order by id");
        expect_same(sql, table, "where " + key + " in (3, " + value + ", 1, 3) order by id");
        expect_same(sql, table,
                    "where " + key + " = " + value + " and id between 2 and 6 order by id");
      }
    }
  }
  for (const std::string order :
       {"id", "id desc", "name, id", "name desc, id", "function, id", "function desc, id",
        "name collate nocase, id", "class, id", "function, name, id", "name, function, id",
        "function, name desc, id desc"}) {
    expect_same(sql, "calls", "order by " + order);
    expect_same(sql, "calls", "where id > 3 order by " + order);
    expect_same(sql, "calls", "where id > 3 order by " + order + " limit 3 offset 1");
  }
}

TEST_F(SqlPlan, ShortWaysGiveWhatTheLongWayGives) { compare(sql_); }

TEST(SqlPlanOfRich, ShortWaysGiveWhatTheLongWayGives) {
  for (const ByteOrder order : both_orders) {
    OpenSql sql(rich_trace(order).build());
    compare(sql);
    for (const std::string names : {"name", "function", "name, function", "function, name"}) {
      const std::string rest = " group by " + names + " order by name, function";
      const std::string columns = "select name, function, count(*), sum(id) from ";
      EXPECT_EQ(sql.rows(columns + "calls" + rest),
                sql.rows("with t as materialized (select * from calls) " + columns + "t" + rest));
      EXPECT_EQ(sql.rows("select distinct " + names + " from calls order by 1"),
                sql.rows("with t as materialized (select * from calls) select distinct " + names +
                         " from t order by 1"));
    }
  }
}

}  // namespace
}  // namespace CT::Test
