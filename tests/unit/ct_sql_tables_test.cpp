// SPDX-License-Identifier: MIT
//
// Each table on a small trace in both byte orders.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "ctsql/ct_tables.h"
#include "open_sql.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

constexpr std::string_view trace_text =
    "E: class user \"App\\\\Failure\" file \"e.php\" line 4\n"
    "Q: class internal \"PDO\"\n"
    "M: function user \"main\" file \"m.php\" line 3\n"
    "F: function internal \"query\" class Q\n"
    "startup @1000000000 mem 100 url \"http://h/x?a=1\" uri \"/x\" host \"h\" method \"GET\"\n"
    "a: call @1000000000+100 mem 110 at \"index.php\":7 fn M args [\"x\", 1.5, [1, 2], [\"k\" => "
    "null]]\n"
    "b: method @1000000000+1000 mem 120 fn F this obj(Q, 1) args [\"select 1\"]\n"
    "return @1000000000+4000 mem 140 of b value \"one \\\"row\\\"\"\n"
    "c: method @1000000000+5000 mem 140 fn F this obj(Q, 2) args [\"select 2\"]\n"
    "exception @1000000000+6000 mem 150 of c value obj(E, 9)\n"
    "d: call @1000000000+7000 fn M args []\n"
    "shutdown @1000000000+30000 mem 91\n";

class SqlTables : public testing::Test {
 protected:
  static std::string rows(const std::string& query) {
    std::string first;
    for (const BuiltTrace& built : build_traces(trace_text)) {
      OpenSql sql(built.bytes);
      const std::string rows = sql.rows(query);
      if (first.empty()) first = rows;
      EXPECT_EQ(rows, first);
    }
    return first;
  }
};

TEST_F(SqlTables, Request) {
  EXPECT_EQ(rows("select path, url, uri, host, method, started, total_ns, memory, memory_peak "
                 "from request"),
            "test.ct|http://h/x?a=1|/x|h|GET|2001-09-09T01:46:40.000000000Z|30000|100|150\n");
  EXPECT_EQ(rows("select status, bytes_out, nodes, calls, functions, classes, depth, errors, "
                 "thrown, open, complete from request"),
            "-|0|5|4|2|2|2|0|1|2|1\n");
}

TEST_F(SqlTables, NodesAreTheTree) {
  EXPECT_EQ(rows("select id, parent, last, depth, kind, outcome, start_ns, total_ns, own_ns "
                 "from nodes"),
            "0|-|4|0|request|ended|0|30000|100\n"
            "1|0|4|1|call|open|100|29900|2900\n"
            "2|1|2|2|call|ended|1000|3000|3000\n"
            "3|1|3|2|call|threw|5000|1000|1000\n"
            "4|1|4|2|call|open|7000|23000|23000\n");
  EXPECT_EQ(rows("select text from nodes where id = 2"),
            "*PDO::query(\"select 1\") Returned: \"one \\\"row\\\"\"\n");
}

TEST_F(SqlTables, CallsWithTheirValues) {
  EXPECT_EQ(rows("select id, function, name, class, builtin, arg_count, file, line from calls"),
            "1|0|main|-|0|4|index.php|7\n"
            "2|1|PDO::query|PDO|1|1|-|-\n"
            "3|1|PDO::query|PDO|1|1|-|-\n"
            "4|0|main|-|0|0|-|-\n");
  EXPECT_EQ(rows("select this, args, returned, thrown from calls"),
            "-|[\"x\",1.5,[1,2],{\"k\":null}]|-|-\n"
            "{\"class\":\"PDO\",\"handle\":1}|[\"select 1\"]|\"one \\\"row\\\"\"|-\n"
            "{\"class\":\"PDO\",\"handle\":2}|[\"select 2\"]|-|"
            "{\"class\":\"App\\\\Failure\",\"handle\":9}\n"
            "-|[]|-|-\n");
  EXPECT_EQ(rows("select memory, memory_delta, own_memory from calls"),
            "110|-19|-49\n120|20|20\n140|10|10\n-|-|-\n");
}

TEST_F(SqlTables, ValuesAreJsonToSqlite) {
  EXPECT_EQ(rows("select args ->> 0, args -> 2, args ->> '$[3].k' from calls where id = 1"),
            "x|[1,2]|-\n");
  EXPECT_EQ(rows("select json_object('args', args) from calls where id = 2"),
            "{\"args\":[\"select 1\"]}\n");
  EXPECT_EQ(rows("select plain(returned) from calls where id = 2"), "one \"row\"\n");
  EXPECT_EQ(rows("select c.id, e.value from calls c, json_each(c.args) e where e.key = 0"),
            "1|x\n2|select 1\n3|select 2\n");
}

TEST_F(SqlTables, FunctionsWithTheirProfile) {
  EXPECT_EQ(rows("select id, name, class, method, builtin, calls, total_ns, own_ns, own_memory, "
                 "file, line from functions"),
            "0|main|-|-|0|2|29900|25900|-49|m.php|3\n"
            "1|PDO::query|PDO|query|1|2|4000|4000|30|-|-\n");
  EXPECT_EQ(rows("select id, name, builtin, file, line from classes order by name"),
            "1|App\\Failure|0|e.php|4\n0|PDO|1|-|-\n");
}

TEST_F(SqlTables, Ancestors) {
  EXPECT_EQ(rows("select id, depth from ancestors(3)"), "0|0\n1|1\n");
  EXPECT_EQ(rows("select c.id, a.id from calls c, ancestors(c.id) a where name = 'PDO::query'"),
            "2|0\n2|1\n3|0\n3|1\n");
  EXPECT_EQ(rows("select * from ancestors(0)"), "");
  EXPECT_EQ(rows("select * from ancestors(-1)"), "");
  EXPECT_EQ(rows("select * from ancestors(5)"), "");
  EXPECT_EQ(rows("select * from ancestors(null)"), "");
  EXPECT_EQ(rows("select * from ancestors('x')"), "");
  EXPECT_THAT(rows("select * from ancestors"), HasSubstr("error: ancestors needs the id"));
}

TEST(SqlOutputTables, WhatWentToTheClient) {
  const std::string_view text =
      "startup @10\n"
      "i: include @10 \"lib.php\"\n"
      "include_return @10+5 of i\n"
      "header @10+6 1 \"Set-Cookie: a=1\"\n"
      "send_headers @10+7 404 \"HTTP/1.1 404 Not Found\"\n"
      "w: write @10+8 \"hello\"\n"
      "write_end @10+9 of w\n"
      "error @10+10 2 \"oops\"\n"
      "event @10+11 \"mark\" sequence 3\n"
      "shutdown @10+12\n";
  for (const BuiltTrace& built : build_traces(text)) {
    OpenSql sql(built.bytes);
    EXPECT_EQ(sql.rows("select path, outcome, thrown from includes"), "lib.php|ended|-\n");
    EXPECT_EQ(sql.rows("select operation, header from headers"), "add|Set-Cookie: a=1\n");
    EXPECT_EQ(sql.rows("select code, status from sent"), "404|HTTP/1.1 404 Not Found\n");
    EXPECT_EQ(sql.rows("select body, size, total_ns from writes"), "hello|5|1\n");
    EXPECT_EQ(sql.rows("select number, level, message from errors"), "2|E_WARNING|oops\n");
    EXPECT_EQ(sql.rows("select name, sequence from events"), "mark|3\n");
    EXPECT_EQ(sql.rows("select status, bytes_out, errors, complete from request"), "404|5|1|1\n");
  }
}

TEST_F(SqlTables, RepeatsAreEqualCalls) {
  const std::string_view text =
      "F: function user \"f\"\n"
      "startup @10\n"
      "a: call @10+1 fn F args [1]\n"
      "return @10+2 of a\n"
      "b: call @10+3 fn F args [2]\n"
      "return @10+4 of b\n"
      "c: call @10+5 fn F args [1]\n"
      "return @10+8 of c\n"
      "shutdown @10+30\n";
  for (const BuiltTrace& built : build_traces(text)) {
    OpenSql sql(built.bytes);
    EXPECT_EQ(sql.rows("select * from repeats"), "0|f|[1]|2|4|1|3|1|none\n");
  }
}

// No row and no column of any table may fail, and every column is told about.
TEST(SqlSchema, EveryColumnOfEveryTableCanBeReadAndHasALine) {
  for (const ByteOrder order : both_orders) {
    OpenSql sql(rich_trace(order).build());
    std::set<std::string> names;
    for (const Sql::Table* table : Sql::tables()) {
      SCOPED_TRACE(table->name);
      EXPECT_TRUE(names.insert(table->name).second);
      EXPECT_EQ(Sql::find_table(table->name), table);
      const std::string name = table->name;
      const std::string rows =
          sql.rows("select * from " + (name == "ancestors" ? name + "(3)" : name));
      EXPECT_THAT(rows, testing::Not(HasSubstr("error: ")));
      if (name != "repeats" && name != "exceptions") {
        EXPECT_NE(rows, "");
      }
      for (const Sql::Column& column : table->columns) {
        if (column.key == Sql::Key::given) continue;
        EXPECT_THAT(Sql::schema_text(*table), HasSubstr("\n  " + std::string(column.name) + " "));
        EXPECT_STRNE(column.meaning, "");
      }
      EXPECT_THAT(Sql::schema_text(), HasSubstr(Sql::schema_text(*table)));
    }
  }
  EXPECT_EQ(Sql::find_table("CALLS"), Sql::find_table("calls"));
  EXPECT_EQ(Sql::find_table("nothing"), nullptr);
}

TEST(SqlSchema, OfATraceWithoutNodes) {
  OpenSql sql(TraceBuilder().build());
  EXPECT_EQ(sql.rows("select nodes, total_ns, url, started, complete from request"), "0|0|-|-|0\n");
  EXPECT_EQ(sql.rows("select * from nodes"), "");
  EXPECT_EQ(sql.rows("select count(*) from calls where parent = 0 or name = 'x'"), "0\n");
  EXPECT_EQ(sql.rows("select name, count(*) from calls group by name"), "");
}

}  // namespace
}  // namespace CT::Test
