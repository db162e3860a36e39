// SPDX-License-Identifier: MIT
//
// How a query asks a table for rows: by which key, between which numbers, in which order. SQLite
// tests every row again, so a search may give more rows than were asked for, but never fewer.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "ctsql/ct_sqlite.h"
#include "ctsql/ct_table.h"

namespace CT::Sql {

enum class Access : std::uint8_t {
  all,                   // in the order of their numbers
  of_parent,             // the children of a node
  of_function,           // the calls of a function
  of_name,               // the calls of all functions of a name, or these functions
  function_by_function,  // all calls, those of one function behind each other
  name_by_name,          // the same in the order of the functions' names
  above,                 // a node's ancestors
};

// The rows that a cursor goes through.
struct Search {
  Access access = Access::all;
  std::int64_t low = 0;  // numbers that count, both included
  std::int64_t high = std::numeric_limits<std::int32_t>::max();
  std::int64_t key = -1;  // of_parent, of_function, above
  std::string name = {};  // of_name

  [[nodiscard]] bool is_empty() const { return low > high; }
  void make_empty() { high = low - 1; }
};

// Chooses how to answer, and what SQLite shall hand to read_search(): for xBestIndex. Returns a
// result code of SQLite; SQLITE_ERROR means that a table-valued function was called with nothing.
int choose_plan(const Table& table, TraceData& data, sqlite3_index_info& info);

// What was chosen, with the values that it is about.
Search read_search(int plan, int count, sqlite3_value** values);

}  // namespace CT::Sql
