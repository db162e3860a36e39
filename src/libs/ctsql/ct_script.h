// SPDX-License-Identifier: MIT
//
// The statements of a text, run one after the other.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ctsql/ct_database.h"

namespace CT::Sql {

struct Error {
  std::string message;               // SQLite's
  std::optional<std::size_t> place;  // where in the text it is about
  bool is_stopped = false;           // somebody wanted it to end
};

class Script;

class Statement {
 public:
  // To the next row; false behind the last one and for an error, which the script then has. Throws
  // std::bad_alloc.
  [[nodiscard]] bool step();
  // For sqlite3_column_...(); they are of this row until the next step.
  [[nodiscard]] sqlite3_stmt* get() const { return handle_.get(); }

 private:
  friend class Script;
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  explicit Statement(Script& script) : script_(script) {}

  Script& script_;
  std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

class Script {
 public:
  // Borrows: the database, which can be used, and the text.
  Script(Database& database, std::string_view text)
      : database_(database), text_(text), statement_(*this) {}
  Script(const Script&) = delete;
  Script& operator=(const Script&) = delete;

  // Valid until the next one; null behind the last one and for an error. Throws std::bad_alloc.
  [[nodiscard]] Statement* next();
  [[nodiscard]] const std::optional<Error>& error() const { return error_; }

 private:
  friend class Statement;
  void fail(int status);

  Database& database_;
  std::string_view text_;
  std::size_t at_ = 0;  // where the statement begins
  std::size_t next_ = 0;
  Statement statement_;
  std::optional<Error> error_;
};

}  // namespace CT::Sql
