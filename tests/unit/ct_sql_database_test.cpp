// SPDX-License-Identifier: MIT
//
// A query can only read, whatever it says; and it can be ended.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ctsql/ct_database.h"
#include "open_sql.h"

namespace CT::Test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class SqlDatabase : public testing::Test {
 protected:
  SqlDatabase() : sql_(build_traces("startup @10\nshutdown @11\n").front().bytes) {}

  OpenSql sql_;
};

TEST_F(SqlDatabase, NothingButReadingIsAllowed) {
  const std::string file = (std::filesystem::temp_directory_path() / "ct_sql_hostile.db").string();
  std::filesystem::remove(file);
  const std::vector<std::string> queries = {
      "attach '" + file + "' as a",
      "attach ':memory:' as a",
      "attach 'file:" + file + "?mode=rwc' as a",
      "detach main",
      "vacuum",
      "vacuum into '" + file + "'",
      "create table t(x)",
      "create temp table t(x)",
      "create table t as select * from calls",
      "create temp view v as select 1",
      "create index i on calls(id)",
      "create trigger t after insert on calls begin select 1; end",
      "create virtual table v using calls",
      "create virtual table v using fts5(x)",
      "create virtual table temp.v using csv(filename='/etc/passwd')",
      "insert into calls(id) values (1)",
      "insert into sqlite_schema values ('table', 'x', 'x', 1, '')",
      "update sqlite_schema set sql = ''",
      "update sqlite_master set rootpage = 2",
      "delete from calls",
      "delete from sqlite_master",
      "update calls set id = 1",
      "drop table calls",
      "alter table calls rename to t",
      "analyze",
      "begin",
      "savepoint s",
      "pragma journal_mode = wal",
      "pragma writable_schema = on",
      "pragma temp_store_directory = '/tmp'",
      "pragma query_only = off",
      "pragma temp_store = file",
      "pragma trusted_schema = on",
      "pragma wal_checkpoint",
      "pragma incremental_vacuum",
      "pragma user_version = 1",
      "pragma database_list",
      "select load_extension('x')",
      "select fts3_tokenizer('simple')",
      "select fts3_tokenizer('x', x'0000000000000000')",
      "select readfile('/etc/passwd')",
      std::string("select writefile('" + file + "', 'x')"),
      "select edit('x')",
      "select * from pragma_writable_schema",
      std::string("explain attach '" + file + "' as a"),
      ".load x",
  };
  for (const std::string& query : queries) {
    EXPECT_THAT(sql_.rows(query), StartsWith("error: ")) << query;
  }
  EXPECT_FALSE(std::filesystem::exists(file));
  // And it goes on as before.
  EXPECT_EQ(sql_.rows("select count(*) from nodes; select count(*) from sqlite_master"), "1\n0\n");
}

TEST_F(SqlDatabase, ReadingIsAllowed) {
  EXPECT_EQ(
      sql_.rows("with recursive t(x) as (values(1) union all select x + 1 from t where x < 3) "
                "select sum(x) from t"),
      "6\n");
  EXPECT_THAT(sql_.rows("pragma table_info(events)"), HasSubstr("|sequence|INTEGER|"));
  EXPECT_EQ(sql_.rows("select name from pragma_table_info('classes') where cid = 1"), "name\n");
  EXPECT_EQ(sql_.rows("select value from json_each('[1, 2]')"), "1\n2\n");
  EXPECT_THAT(sql_.rows("explain query plan select * from calls"), HasSubstr("SCAN calls"));
  EXPECT_EQ(sql_.rows("values (1, 2), (3, 4)"), "1|2\n3|4\n");
}

TEST_F(SqlDatabase, StatementsOfATextFollowEachOther) {
  EXPECT_EQ(sql_.rows(""), "");
  EXPECT_EQ(sql_.rows(" ;; -- nothing\n /* at all */ ;"), "");
  EXPECT_EQ(sql_.rows("select 1; select 2 -- end\n; select 3"), "1\n2\n3\n");
  EXPECT_EQ(sql_.rows("select 1; selec 2; select 3"), "1\nerror: near \"selec\": syntax error\n");
  EXPECT_EQ(sql_.rows(std::string("select 1;\0select 2", 18)), "1\nerror: a NUL in the query\n");
}

TEST_F(SqlDatabase, AnErrorTellsItsPlace) {
  const std::string text = "select 1; select none from calls";
  Sql::Script script(sql_.database(), text);
  Sql::Statement* statement = script.next();
  ASSERT_NE(statement, nullptr);
  EXPECT_TRUE(statement->step());
  EXPECT_FALSE(statement->step());
  EXPECT_EQ(script.next(), nullptr);
  ASSERT_TRUE(script.error());
  EXPECT_EQ(script.error()->message, "no such column: none");
  EXPECT_EQ(script.error()->place, text.find("none"));
  EXPECT_FALSE(script.error()->is_stopped);
  EXPECT_EQ(script.next(), nullptr);
}

TEST_F(SqlDatabase, AQueryWithoutEndCanBeStopped) {
  int asked = 0;
  sql_.database().set_stop([&] { return ++asked == 10; });
  const std::string text =
      "with recursive t(x) as (values(1) union all select x + 1 from t) select count(*) from t";
  Sql::Script script(sql_.database(), text);
  Sql::Statement* statement = script.next();
  ASSERT_NE(statement, nullptr);
  EXPECT_FALSE(statement->step());
  ASSERT_TRUE(script.error());
  EXPECT_TRUE(script.error()->is_stopped);
  EXPECT_EQ(asked, 10);
}

TEST(SqlLimits, OfTextsAndPatterns) {
  OpenSql sql(build_traces("startup @10\n").front().bytes,
              {.longest_text = 10000, .longest_sql = 1000, .longest_pattern = 10});
  EXPECT_THAT(sql.rows("select length(zeroblob(20000))"), HasSubstr("error: "));
  EXPECT_THAT(sql.rows("select hex(zeroblob(9000))"), HasSubstr("error: "));
  std::string long_query = "select '";
  long_query.append(2000, 'x').append("'");
  EXPECT_THAT(sql.rows(long_query), HasSubstr("error: "));
  EXPECT_THAT(sql.rows("select 'a' like '%a%a%a%a%a%'"), HasSubstr("error: "));
  EXPECT_EQ(sql.rows("select length(zeroblob(5000))"), "5000\n");
}

}  // namespace
}  // namespace CT::Test
