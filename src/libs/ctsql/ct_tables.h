// SPDX-License-Identifier: MIT
//
// The list of all tables, and the text that tells of them.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "ctsql/ct_table.h"

namespace CT::Sql {

std::span<const Table* const> tables();

// The table of this name, in capitals or not; null if there is none.
const Table* find_table(std::string_view name);

// A line on each column of a table, or of all tables: name, type, meaning. UTF-8.
std::string schema_text(const Table& table);
std::string schema_text();

// What SQLite is told of a table.
std::string declaration(const Table& table);

}  // namespace CT::Sql
