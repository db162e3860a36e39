// SPDX-License-Identifier: MIT
//
// A file of SQLite that is being made: nobody else reads it before it is done, so nothing of it is
// journalled, and a file that is not finished is worth nothing.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/render/ct_writer.h"
#include "ctsql/ct_cells.h"
#include "ctsql/ct_table.h"

namespace CT::Export {

class SqliteFile {
 public:
  // Opens a file that is empty. What goes wrong, here and below, is
  // said by error(), and then nothing more is done. Throws std::bad_alloc.
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
    // Creates the table first. Borrows: the file.
    Insert(SqliteFile& file, const std::string& create, const std::string& insert);

    void null() override { check(sqlite3_bind_null(statement_.get(), ++column_)); }
    void integer(std::int64_t value) override {
      check(sqlite3_bind_int64(statement_.get(), ++column_, value));
    }
    void real(double value) override {
      check(sqlite3_bind_double(statement_.get(), ++column_, value));
    }
    void kept_text(std::string_view text) override { bind(++column_, text); }
    void text(std::string_view text) override { keep(text); }
    void json(std::string_view text) override { keep(text); }
    // The row is whole; another one begins.
    void put_row();

   private:
    // A text that is gone before the row is whole.
    struct Kept {
      int column;
      std::size_t begin;
      std::size_t size;
    };
    void keep(std::string_view text) {
      kept_.push_back({++column_, texts_.size(), text.size()});
      texts_.put(text);
    }
    void bind(int column, std::string_view text) {
      check(sqlite3_bind_text64(statement_.get(), column, text.data(), text.size(), SQLITE_STATIC,
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
    MemoryWriter texts_;
    PlainArray<Kept> kept_;
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
