// SPDX-License-Identifier: MIT
#include "ctsql/ct_database.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>

#include "ctsql/ct_functions.h"
#include "ctsql/ct_module.h"

namespace CT::Sql {

namespace {

bool is_one_of(std::span<const std::string_view> words, const char* word) {
  return word != nullptr && std::any_of(words.begin(), words.end(), [&](std::string_view other) {
           return sqlite3_stricmp(word, other.data()) == 0;
         });
}

// Functions of SQLite that reach out of the connection, in any of its builds.
bool is_harmful(const char* function) {
  static constexpr std::array<std::string_view, 5> names = {"load_extension", "fts3_tokenizer",
                                                            "readfile", "writefile", "edit"};
  return is_one_of(names, function);
}

// Pragmas that only tell something.
bool is_told(const char* pragma) {
  static constexpr std::array<std::string_view, 7> names = {
      "table_info",     "table_xinfo", "table_list",     "function_list",
      "collation_list", "module_list", "compile_options"};
  return is_one_of(names, pragma);
}

int authorize(void*, int action, const char* first, const char* second, const char*, const char*) {
  static constexpr std::array<std::string_view, 1> schema = {"sqlite_master"};
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_RECURSIVE: return SQLITE_OK;
    case SQLITE_FUNCTION: return is_harmful(second) ? SQLITE_DENY : SQLITE_OK;
    // Asked for while a virtual table declares itself. For anybody else SQLite refuses it, and so
    // does Script, which takes no statement that writes.
    case SQLITE_UPDATE: return is_one_of(schema, first) ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_PRAGMA: return is_told(first) ? SQLITE_OK : SQLITE_DENY;
    default: return SQLITE_DENY;
  }
}

}  // namespace

Database::Database(std::shared_ptr<TraceData> data, const Limits& limits) : data_(std::move(data)) {
  open(limits);
}

void Database::open(const Limits& limits) {
  sqlite3* handle = nullptr;
  const int status =
      sqlite3_open_v2(":memory:", &handle,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  handle_.reset(handle);
  if (!check(status)) return;
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, limits.longest_text);
  sqlite3_limit(handle, SQLITE_LIMIT_SQL_LENGTH, limits.longest_sql);
  sqlite3_limit(handle, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, limits.longest_pattern);
  sqlite3_limit(handle, SQLITE_LIMIT_ATTACHED, 0);
  sqlite3_limit(handle, SQLITE_LIMIT_WORKER_THREADS, 0);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  // What does not fit into the sorter's cache would go to a file.
  if (!check(sqlite3_exec(handle, "pragma temp_store = memory; pragma query_only = on", nullptr,
                          nullptr, nullptr)) ||
      !check(add_tables(handle, data_)) || !check(add_functions(handle))) {
    return;
  }
  check(sqlite3_set_authorizer(handle, authorize, nullptr));
}

bool Database::check(int status) {
  if (status == SQLITE_NOMEM || handle_ == nullptr) throw std::bad_alloc();
  if (status != SQLITE_OK) error_ = sqlite3_errmsg(handle_.get());
  return status == SQLITE_OK;
}

void Database::set_stop(std::function<bool()> stop) {
  constexpr int steps = 1000;  // of SQLite's machine, some tens of microseconds
  stop_ = std::move(stop);
  sqlite3_progress_handler(
      handle_.get(), steps,
      [](void* database) { return static_cast<Database*>(database)->stop_() ? 1 : 0; }, this);
}

}  // namespace CT::Sql
