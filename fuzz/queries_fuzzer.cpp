// SPDX-License-Identifier: MIT
//
// A whole trace: every column of every row of all tables, and queries that must agree with each
// other, whatever the trace says.
#include <new>
#include <optional>
#include <string>

#include "ctsql/ct_database.h"
#include "ctsql/ct_script.h"
#include "ctsql/ct_tables.h"
#include "support.h"
#include "tools/cttool/ct_sql_print.h"

namespace {

using namespace CT;

constexpr int most_stops = 300;  // of a thousand steps each

class Queries {
 public:
  explicit Queries(const Trace& trace)
      : measures_(trace),
        database_(std::make_shared<Sql::TraceData>(trace, measures_, "fuzz"),
                  {.longest_text = 1 << 20}) {
    Fuzz::expect(database_.error().empty(), "a connection");
  }

  // All rows as text; nothing if that is too much.
  std::optional<std::string> text(const std::string& query) {
    constexpr std::size_t most = 1 << 20;
    int asked = 0;
    database_.set_stop([&] { return ++asked > most_stops; });
    Sql::Script script(database_, query);
    std::string text;
    while (Sql::Statement* statement = script.next()) {
      while (text.size() < most && statement->step()) {
        for (int i = 0; i != sqlite3_column_count(statement->get()); ++i) {
          text += Tool::sql_text(statement->get(), i) + "|";
        }
      }
    }
    if (text.size() >= most) return std::nullopt;
    if (!script.error()) return text;
    const bool is_too_much =
        script.error()->is_stopped || script.error()->message == "string or blob too big";
    if (!is_too_much) Fuzz::expect_equal(query.c_str(), script.error()->message, "");
    return std::nullopt;
  }

  void expect_same(const std::string& query, const std::string& other) {
    const auto ours = text(query);
    const auto expected = text(other);
    if (ours && expected) Fuzz::expect_equal(query.c_str(), *ours, *expected);
  }

 private:
  Measures measures_;
  Sql::Database database_;
};

void ask(Queries& queries) {
  for (const Sql::Table* table : Sql::tables()) {
    const std::string name = table->name;
    static_cast<void>(queries.text("select * from " + (name == "ancestors" ? name + "(9)" : name)));
  }
  queries.expect_same("select count(*), coalesce(sum(own_ns), 0) from calls",
                      "select coalesce(sum(calls), 0), coalesce(sum(own_ns), 0) from functions");
  queries.expect_same("select count(*) from nodes", "select nodes from request");
  queries.expect_same(
      "select sum(depth) from nodes where id < 100",
      "select sum((select count(*) from ancestors(nodes.id))) from nodes where id < 100");
  queries.expect_same("select coalesce(sum(last - id), 0) from nodes where id < 100",
                      "select count(*) from nodes a join nodes b on b.id > a.id and b.id <= a.last "
                      "where a.id < 100");
  queries.expect_same("select count(*) from nodes where parent is not null and id < 100",
                      "select count(*) from nodes a join nodes b on b.parent = a.id "
                      "where b.id < 100");
  queries.expect_same("select name, count(*), sum(id) from calls group by name",
                      "with t as materialized (select id, name from calls) "
                      "select name, count(*), sum(id) from t group by name");
  queries.expect_same(
      "select sum(a.id + b.id) from calls a join calls b using (name) "
      "where a.id < 50",
      "with t as materialized (select id, name from calls) "
      "select sum(a.id + b.id) from t a join t b using (name) where a.id < 50");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr sqlite3_int64 heap = 256 << 20;
  sqlite3_hard_heap_limit64(heap);
  Trace trace;
  if (!trace.open(data, size)) return 0;
  try {
    Queries queries(trace);
    ask(queries);
  } catch (const std::bad_alloc&) {
    // Rows may want more than the heap has.
  }
  return 0;
}
