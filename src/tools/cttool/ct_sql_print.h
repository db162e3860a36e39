// SPDX-License-Identifier: MIT
//
// Results of queries in each of the forms. All but the table hold one row at a time; the table
// holds its first rows, from which it takes the widths of its columns.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ctsql/ct_sqlite.h"
#include "tools/cttool/ct_printer.h"

namespace CT::Tool {

enum class SqlForm { table, csv, json, jsonl, markdown };

class ResultPrinter {
 public:
  virtual ~ResultPrinter() = default;
  // Around all results.
  virtual void begin() {}
  virtual void end() {}
  // Around one, whose statement was not stepped yet or is done; and each of its rows.
  virtual void begin_result(sqlite3_stmt* statement) = 0;
  virtual void put_row(sqlite3_stmt* statement) = 0;
  virtual void end_result() {}
};

// Borrows: the output. `trace`: its name. `width`: columns that a table may have; 0 for any.
std::unique_ptr<ResultPrinter> make_result_printer(SqlForm form, const std::string& trace,
                                                   std::size_t width, Writer& out);
std::unique_ptr<ResultPrinter> make_table_printer(std::size_t width, Writer& out);

// Of a statement's current row, or of its columns. Texts are UTF-8 as SQLite has them, and NULL is
// empty; a blob is x'00ff'.
std::string sql_text(sqlite3_stmt* statement, int column);
std::vector<std::string> column_names(sqlite3_stmt* statement);

}  // namespace CT::Tool
