// SPDX-License-Identifier: MIT
//
// The tables of ctsql, row by row in their order, without SQL: of the tables of nodes the rows of
// the chosen nodes. All other tables tell of the whole trace.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "ctexport/ct_export_source.h"
#include "ctsql/ct_table.h"

namespace CT::Export {

// Whether a row of the table is a node.
inline bool has_nodes(const Sql::Table& table) {
  return table.rows == Sql::RowSet::nodes || table.rows == Sql::RowSet::calls ||
         table.rows == Sql::RowSet::listed;
}

// Whether a column has what a call was given or gave back, or a text that was written: what may be
// large, and what may be nobody else's business.
inline bool has_values(const Sql::Column& column) {
  const std::string_view name = column.name;
  return column.type == Sql::json_type || name == "text" || name == "body";
}

// The columns that an export has.
std::vector<const Sql::Column*> exported_columns(const Sql::Table& table, Values values);

// Whether a node is a row of a table of nodes.
bool is_row(const Sql::Table& table, NodeId id, const Trace& trace, const Measures& measures);

// One table.
class TableRows {
 public:
  // Borrows all of it. Requires: a table whose rows do not depend on what is asked for.
  TableRows(const Sql::Table& table, const Source& source, Sql::TraceData& data)
      : table_(table),
        source_(source),
        shape_(source.trace),
        row_(data, shape_),
        count_(has_nodes(table) ? source.trace.node_count() : table.count(data)) {}

  // To the next row; false behind the last one.
  [[nodiscard]] bool next();
  // Hands a column of the row on.
  void put(const Sql::Column& column, Sql::Cells& cells) {
    row_.put_into(cells);
    column.put(row_);
  }

 private:
  const Sql::Table& table_;
  const Source& source_;
  Sql::ShapeWalk shape_;
  Sql::Row row_;
  std::int64_t count_;
  std::int32_t next_ = 0;
};

}  // namespace CT::Export
