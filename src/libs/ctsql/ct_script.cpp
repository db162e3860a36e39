// SPDX-License-Identifier: MIT
#include "ctsql/ct_script.h"

#include <limits>
#include <new>

namespace CT::Sql {

namespace {

constexpr char only_reads[] = "not allowed: a query can only read";

}  // namespace

bool Statement::step() {
  const int status = sqlite3_step(handle_.get());
  if (status == SQLITE_ROW) return true;
  if (status != SQLITE_DONE) script_.fail(status);
  return false;
}

Statement* Script::next() {
  statement_.handle_.reset();
  while (!error_ && next_ < text_.size()) {
    at_ = next_;
    const std::string_view rest = text_.substr(at_);
    if (rest.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()) ||
        rest.front() == '\0') {
      error_ = Error{rest.front() == '\0' ? "a NUL in the query" : "the query is too long", at_};
      return nullptr;
    }
    sqlite3_stmt* made = nullptr;
    const char* tail = nullptr;
    const int status = sqlite3_prepare_v2(database_.get(), rest.data(),
                                          static_cast<int>(rest.size()), &made, &tail);
    if (status != SQLITE_OK) {
      fail(status);
      return nullptr;
    }
    next_ = static_cast<std::size_t>(tail - text_.data());
    // A comment, or nothing at all, is no statement.
    if (made == nullptr) continue;
    statement_.handle_.reset(made);
    if (sqlite3_stmt_readonly(made) == 0) {
      error_ = Error{only_reads, at_};
      return nullptr;
    }
    return &statement_;
  }
  return nullptr;
}

void Script::fail(int status) {
  if (status == SQLITE_NOMEM) throw std::bad_alloc();
  error_ = Error{sqlite3_errmsg(database_.get()), std::nullopt, status == SQLITE_INTERRUPT};
  // SQLite names what is not allowed only where it is a function or a column.
  if (error_->message == "not authorized" || error_->message == "authorization denied") {
    error_->message = only_reads;
  }
  const int place = sqlite3_error_offset(database_.get());
  if (place >= 0) error_->place = at_ + static_cast<std::size_t>(place);
}

}  // namespace CT::Sql
