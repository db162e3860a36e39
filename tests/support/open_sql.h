// SPDX-License-Identifier: MIT
//
// OpenSql: a trace opened from memory, and queries over it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "ctsql/ct_database.h"
#include "ctsql/ct_script.h"
#include "open_trace.h"

namespace CT::Test {

class OpenSql {
 public:
  explicit OpenSql(std::string_view bytes, const Sql::Limits& limits = {}) {
    EXPECT_TRUE(trace_.open(as_bytes(bytes), bytes.size())) << trace_.error_message();
    measures_ = Measures(trace_);
    data_ = std::make_shared<Sql::TraceData>(trace_, measures_, "test.ct");
    database_ = std::make_unique<Sql::Database>(data_, limits);
    EXPECT_EQ(database_->error(), "");
  }

  const Trace& trace() const { return trace_; }
  Sql::Database& database() { return *database_; }

  // The rows of all statements, each on a line with bars between its cells; NULL is "-". An error
  // is a last line that begins with "error: ".
  std::string rows(const std::string& query) {
    std::string text;
    Sql::Script script(*database_, query);
    while (Sql::Statement* statement = script.next()) {
      while (statement->step()) text += row_of(statement->get());
    }
    if (script.error()) text += "error: " + script.error()->message + "\n";
    return text;
  }

  // How many rows cursors stood on for it.
  std::uint64_t touched(const std::string& query) {
    const std::uint64_t before = data_->rows_touched();
    EXPECT_EQ(rows(query).find("error: "), std::string::npos) << rows(query);
    return data_->rows_touched() - before;
  }

 private:
  static std::string row_of(sqlite3_stmt* row) {
    std::string text;
    for (int i = 0; i != sqlite3_column_count(row); ++i) {
      const void* const cell = sqlite3_column_text(row, i);
      if (i != 0) text += '|';
      text += cell != nullptr ? static_cast<const char*>(cell) : "-";
    }
    return text + "\n";
  }

  Trace trace_;
  Measures measures_;
  std::shared_ptr<Sql::TraceData> data_;
  std::unique_ptr<Sql::Database> database_;
};

}  // namespace CT::Test
