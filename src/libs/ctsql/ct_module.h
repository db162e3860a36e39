// SPDX-License-Identifier: MIT
//
// The tables as a module of virtual tables of SQLite. Memory that runs out becomes SQLITE_NOMEM.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ctsql/ct_sqlite.h"
#include "ctsql/ct_table.h"

namespace CT::Sql {

// Makes each table over one trace known to a connection under its own name, as a table that is just
// there. They keep the data alive. Returns a result code of SQLite.
int add_tables(sqlite3* database, const std::shared_ptr<TraceData>& data);

// What a created virtual table reads.
struct TableSource {
  const Table* table = nullptr;
  std::shared_ptr<TraceData> data;
};

// Finds the source of "create virtual table ... using NAME(arguments)"; without one it has put the
// reason into the text.
using FindSource =
    std::function<TableSource(std::span<const char* const> arguments, std::string& error)>;

// Makes a module known that creates such tables.
int add_module(sqlite3* database, const char* name, FindSource find);

}  // namespace CT::Sql
