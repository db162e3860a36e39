// SPDX-License-Identifier: MIT
//
// Functions for queries over traces:
//
//   x regexp y   1 if the regular expression y (PCRE) is found in x, else 0. A pattern that is
//   none,
//                or takes too long, is an error.
//   plain(x)     a scalar of JSON as value: null as NULL, true and false as 1 and 0, numbers and
//                strings as they are; anything else unchanged.
#pragma once

#include <string_view>

#include "ctsql/ct_sqlite.h"

namespace CT::Sql {

// Makes them known to a connection. Returns a result code of SQLite.
int add_functions(sqlite3* database);

// Each of the two.
int add_regexp(sqlite3* database);
int add_plain(sqlite3* database);

// A value as UTF-8; valid until it changes.
inline std::string_view text_of(sqlite3_value* value) {
  const void* const text = sqlite3_value_text(value);
  if (text == nullptr) return {};
  return {static_cast<const char*>(text), static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

}  // namespace CT::Sql
