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

bool TableRows::next() {
  while (next_ < count_) {
    const std::int32_t number = next_++;
    if (has_nodes(table_)) {
      shape_.next();
      if (!is_row(number)) continue;
    }
    row_.place(number);
    return true;
  }
  return false;
}

bool TableRows::is_row(NodeId id) const {
  if (!source_.chosen.has(id)) return false;
  if (table_.rows == Sql::RowSet::nodes) return true;
  const bool is_call = source_.measures[id].function >= 0;
  if (table_.rows == Sql::RowSet::calls) return is_call;
  return !is_call && source_.trace.type(id) == table_.type;
}

}  // namespace CT::Export
