// SPDX-License-Identifier: MIT
#include "ctexport/ct_table_rows.h"

namespace CT::Export {

std::vector<const Sql::Column*> exported_columns(const Sql::Table& table, Values values) {
  std::vector<const Sql::Column*> columns;
  for (const Sql::Column& column : table.columns) {
    if (column.put == nullptr || (values == Values::none && has_values(column))) continue;
    columns.push_back(&column);
  }
  return columns;
}

bool is_row(const Sql::Table& table, NodeId id, const Trace& trace, const Measures& measures) {
  if (table.rows == Sql::RowSet::nodes) return true;
  const bool is_call = measures[id].function >= 0;
  if (table.rows == Sql::RowSet::calls) return is_call;
  return !is_call && trace.type(id) == table.type;
}

bool TableRows::next() {
  while (next_ < count_) {
    const std::int32_t number = next_++;
    if (has_nodes(table_)) {
      shape_.next();
      if (!source_.chosen.has(number)) continue;
      if (!is_row(table_, number, source_.trace, source_.measures)) continue;
    }
    row_.place(number);
    return true;
  }
  return false;
}

}  // namespace CT::Export
