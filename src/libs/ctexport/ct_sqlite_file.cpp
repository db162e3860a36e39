// SPDX-License-Identifier: MIT
#include "ctexport/ct_sqlite_file.h"

#include <new>

namespace CT::Export {

SqliteFile::SqliteFile(const std::string& path) {
  sqlite3* handle = nullptr;
  // A name that begins with "file:" is a name all the same.
  const std::string name = path.starts_with('/') ? path : "./" + path;
  const int status =
      sqlite3_open_v2(name.c_str(), &handle,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  handle_.reset(handle);
  check(status);
  run("pragma cache_size = -1000; pragma journal_mode = off; pragma synchronous = off; pragma "
      "locking_mode = exclusive;"
      "begin");
}

void SqliteFile::check(int status) {
  if (status == SQLITE_OK || status == SQLITE_DONE) return;
  if (status == SQLITE_NOMEM || handle_ == nullptr) throw std::bad_alloc();
  if (error_.empty()) error_ = sqlite3_errmsg(handle_.get());
}

void SqliteFile::run(const char* sql) {
  if (ok()) check(sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr));
}

void SqliteFile::finish() {
  run("commit");
  if (ok()) check(sqlite3_close(handle_.release()));
}

SqliteFile::Insert::Insert(SqliteFile& file, const std::string& create, const std::string& insert)
    : file_(file) {
  file_.run(create);
  if (!file_.ok()) return;
  sqlite3_stmt* statement = nullptr;
  file_.check(sqlite3_prepare_v2(file_.handle_.get(), insert.c_str(), -1, &statement, nullptr));
  statement_.reset(statement);
}

void SqliteFile::Insert::put_row() {
  for (const Kept& kept : kept_) bind(kept.column, texts_.view().substr(kept.begin, kept.size));
  column_ = 0;
  kept_.clear();
  texts_.clear();
  if (!file_.ok()) return;
  file_.check(sqlite3_step(statement_.get()));
  sqlite3_reset(statement_.get());
}

}  // namespace CT::Export
