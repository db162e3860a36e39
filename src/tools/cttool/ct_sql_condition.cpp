// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_sql_condition.h"

#include <cstdio>
#include <memory>

#include "ctsql/ct_database.h"
#include "ctsql/ct_script.h"
#include "tools/cttool/ct_sql_error.h"

namespace CT::Tool {

namespace {

bool say(const std::string& what) {
  std::fputs(what.c_str(), stderr);
  return false;
}

}  // namespace

bool SqlCondition::find(const Trace& trace, const Measures& measures,
                        const std::string& expression) {
  if (expression.empty()) return true;
  takes_all_ = false;
  taken_.assign(static_cast<std::size_t>(trace.node_count()), false);
  Sql::Database database(std::make_shared<Sql::TraceData>(trace, measures, std::string()));
  if (!database.error().empty()) return say("cttool: " + database.error() + "\n");
  // On lines of its own, so that a comment at its end hides nothing.
  const std::string before = "select id from calls where (\n";
  std::string query = before;
  query += expression;
  query += "\n) order by id";
  Sql::Script script(database, query);
  if (Sql::Statement* statement = script.next()) {
    while (statement->step()) {
      const std::int64_t id = sqlite3_column_int64(statement->get(), 0);
      if (id >= 0 && id < trace.node_count()) taken_[static_cast<std::size_t>(id)] = true;
    }
    if (!script.error() && script.next() != nullptr) {
      return say("cttool: --where takes one expression, such as \"total_ns > 1e6\"\n");
    }
  }
  if (!script.error()) return true;
  Sql::Error error = *script.error();
  const std::size_t end = before.size() + expression.size();
  const bool is_inside = error.place && *error.place >= before.size() && *error.place <= end;
  error.place = is_inside ? std::optional(*error.place - before.size()) : std::nullopt;
  return say(error_text(error, expression));
}

}  // namespace CT::Tool
