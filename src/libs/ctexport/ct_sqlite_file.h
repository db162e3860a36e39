// SPDX-License-Identifier: MIT
//
// A file of SQLite that is being made: nobody else reads it before it is done, so nothing of it is
// journalled, and a file that is not finished is worth nothing.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "ctsql/ct_cells.h"
#include "ctsql/ct_table.h"

namespace CT::Export {

class SqliteFile {
 public:
  // Opens a file that is empty. What goes wrong, here and below, is said by error(), and then
  // nothing more is done. Throws std::bad_alloc.
  explicit SqliteFile(const std::string& path);

  // Empty if all went well so far.
  [[nodiscard]] const std::string& error() const { return error_; }
  [[nodiscard]] bool ok() const { return error_.empty(); }

  void run(const char* sql);
  void run(const std::string& sql) { run(sql.c_str()); }
  // Closes the file, which is whole then if all is well.
  void finish();

  // A row of values for an INSERT, from the first column on.
  class Insert final : public Sql::Cells {
   public:
    // Borrows: the file.
    Insert(SqliteFile& file, const std::string& sql);

    void null() override { check(sqlite3_bind_null(statement_.get(), ++column_)); }
    void integer(std::int64_t value) override {
      check(sqlite3_bind_int64(statement_.get(), ++column_, value));
    }
    void real(double value) override {
      check(sqlite3_bind_double(statement_.get(), ++column_, value));
    }
    void kept_text(std::string_view text) override { bind(text, SQLITE_STATIC); }
    void text(std::string_view text) override { bind(text, SQLITE_TRANSIENT); }
    void json(std::string_view text) override { bind(text, SQLITE_TRANSIENT); }
    // The row is whole; another one begins.
    void put_row();

   private:
    void bind(std::string_view text, sqlite3_destructor_type lifetime) {
      check(sqlite3_bind_text64(statement_.get(), ++column_, text.data(), text.size(), lifetime,
                                SQLITE_UTF8));
    }
    void check(int status) {
      if (status != SQLITE_OK) file_.check(status);
    }

    struct Finalize {
      void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    SqliteFile& file_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
    int column_ = 0;
  };

 private:
  void check(int status);

  struct Close {
    void operator()(sqlite3* handle) const { sqlite3_close(handle); }
  };
  std::unique_ptr<sqlite3, Close> handle_;
  std::string error_;
};

}  // namespace CT::Export
