// SPDX-License-Identifier: MIT
//
// A connection to SQLite over one trace that can do nothing but read it. Whatever the SQL says, no
// file is opened, written, attached or loaded: only SELECT is allowed, and what is computed on the
// way stays in memory.
//
//   CT::Sql::Database database(data);
//   CT::Sql::Script script(database, "select count(*) from calls; select ...");
//   while (CT::Sql::Statement* statement = script.next()) {
//     while (statement->step()) ... sqlite3_column_int64(statement->get(), 0) ...
//   }
//   if (script.error()) ... script.error()->message ...
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "ctsql/ct_sqlite.h"
#include "ctsql/ct_trace_data.h"

namespace CT::Sql {

// What a query may use.
struct Limits {
  int longest_text = 1 << 28;  // in bytes, of any value: the largest of a trace fit
  int longest_sql = 1 << 20;   // in bytes
  int longest_pattern = 1000;  // in bytes, of LIKE and GLOB, whose time grows with it
};

class Database {
 public:
  // Throws std::bad_alloc; anything else that goes wrong is said by error().
  explicit Database(std::shared_ptr<TraceData> data, const Limits& limits = {});
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Why it cannot be used; empty if it can.
  [[nodiscard]] const std::string& error() const { return error_; }
  [[nodiscard]] sqlite3* get() const { return handle_.get(); }
  [[nodiscard]] TraceData& data() { return *data_; }

  // From now on `stop` is asked now and then while a query runs, and true ends it.
  void set_stop(std::function<bool()> stop);

 private:
  struct Close {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };

  bool check(int status);
  void open(const Limits& limits);

  std::shared_ptr<TraceData> data_;
  std::function<bool()> stop_;
  std::string error_;
  std::unique_ptr<sqlite3, Close> handle_;
};

}  // namespace CT::Sql
