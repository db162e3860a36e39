// SPDX-License-Identifier: MIT
//
// Tables over a trace as data: of each its rows and its columns, with everything that is said about
// them in one place.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "ctsql/ct_row.h"

namespace CT::Sql {

// What rows are searched by without looking at all of them.
enum class Key : std::uint8_t { none, id, parent, function, name, given };

// Declared types. JSON is text that programs may take for JSON.
inline constexpr char integer_type[] = "INTEGER";
inline constexpr char text_type[] = "TEXT";
inline constexpr char json_type[] = "JSON TEXT";

struct Column {
  const char* name;
  const char* type;
  const char* meaning;  // one line
  void (*put)(Row& row);
  // `given` is no column of the result but what a table-valued function is called with.
  Key key = Key::none;
};

// Which rows there are.
enum class RowSet : std::uint8_t {
  nodes,     // all of them
  calls,     // that are calls
  listed,    // of one other type
  numbered,  // from 0 on
  above,     // around the node that is given
};

struct Table {
  const char* name;
  const char* meaning;  // one line
  std::span<const Column> columns;
  RowSet rows;
  Node::Type type = Node::Type::STARTUP;             // of `listed`
  std::int64_t (*count)(TraceData& data) = nullptr;  // of `numbered`
};

// Columns of several lists as one.
template <std::size_t... Sizes>
constexpr auto joined(const std::array<Column, Sizes>&... lists) {
  std::array<Column, (Sizes + ...)> all{};
  std::size_t at = 0;
  const auto add = [&](const auto& list) {
    for (const Column& column : list) all[at++] = column;
  };
  (add(lists), ...);
  return all;
}

}  // namespace CT::Sql
