// SPDX-License-Identifier: MIT
//
// A database file: the tables of ctsql as real ones. What is not asked of a table but computed on
// the way, the way up from a node, is a view.
#include <deque>
#include <string_view>
#include <vector>

#include "codetrace/ct_version.h"
#include "ctexport/ct_export_origin.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_sqlite_file.h"
#include "ctexport/ct_sqlite_views.h"
#include "ctexport/ct_table_rows.h"
#include "ctsql/ct_node_tables.h"
#include "ctsql/ct_tables.h"

namespace CT::Export {

namespace {

// Raised when a table or a column is taken away or means something else.
constexpr int schema_version = 1;
// By which `file` and others know whose database it is: "CTrc".
constexpr int application = 0x43547263;

std::string create_table(const Sql::Table& table, const std::vector<const Sql::Column*>& columns) {
  std::string sql = "create table \"";
  sql += table.name;
  sql += "\" (";
  for (const Sql::Column* column : columns) {
    if (column != columns.front()) sql += ", ";
    sql += '"';
    sql += column->name;
    sql += "\" ";
    sql += column->type;
    if (column->key == Sql::Key::id) sql += " primary key";
  }
  return sql += ")";
}

std::string insert_into(std::string_view table, std::size_t columns) {
  std::string sql = "insert into \"";
  sql += table;
  sql += "\" values (?";
  for (std::size_t i = 1; i < columns; ++i) sql += ", ?";
  return sql += ")";
}

// `wanted`: the name of the only table; empty for all.
bool is_wanted(const Sql::Table& table, const std::string& wanted) {
  return wanted.empty() || Sql::find_table(wanted) == &table;
}

// A table that is being filled.
class Filling {
 public:
  Filling(const Sql::Table& table, SqliteFile& file)
      : table_(table),
        columns_(exported_columns(table, Values::full)),
        insert_(file, create_table(table, columns_), insert_into(table.name, columns_.size())) {}

  [[nodiscard]] const Sql::Table& table() const { return table_; }
  // `put` puts a column of the row into cells.
  template <class Put>
  void put_row(const Put& put) {
    for (const Sql::Column* column : columns_) put(*column, insert_);
    insert_.put_row();
  }

 private:
  const Sql::Table& table_;
  std::vector<const Sql::Column*> columns_;
  SqliteFile::Insert insert_;
};

// All tables of nodes at once, so that each node is read once.
void write_node_tables(const Source& source, const std::string& wanted, SqliteFile& file) {
  std::deque<Filling> tables;
  for (const Sql::Table* table : Sql::tables()) {
    if (has_nodes(*table) && is_wanted(*table, wanted)) tables.emplace_back(*table, file);
  }
  Sql::TraceData data(source.trace, source.measures, std::string(source.path));
  Sql::ShapeWalk shape(source.trace);
  Sql::Row row(data, shape);
  for (NodeId id = 0; id != source.trace.node_count() && file.ok(); ++id) {
    shape.next();
    if (!source.chosen.has(id)) continue;
    row.place(id);
    for (Filling& filling : tables) {
      if (!is_row(filling.table(), id, source.trace, source.measures)) continue;
      filling.put_row([&](const Sql::Column& column, Sql::Cells& cells) {
        row.put_into(cells);
        column.put(row);
      });
    }
  }
}

// What one table needs to be made is given back before the next one.
void write_other_tables(const Source& source, const std::string& wanted, SqliteFile& file) {
  for (const Sql::Table* table : Sql::tables()) {
    if (table->rows != Sql::RowSet::numbered || !is_wanted(*table, wanted)) continue;
    Sql::TraceData data(source.trace, source.measures, std::string(source.path));
    Filling filling(*table, file);
    TableRows rows(*table, source, data);
    while (file.ok() && rows.next()) {
      filling.put_row(
          [&](const Sql::Column& column, Sql::Cells& cells) { rows.put(column, cells); });
    }
  }
}

std::int64_t nodes_left_out(const Source& source) {
  std::int64_t count = 0;
  for (NodeId id = 0; id != source.trace.node_count(); ++id) count += source.chosen.has(id) ? 0 : 1;
  return count;
}

// What the file was made from: a row a fact.
void write_origin_table(const Source& source, SqliteFile& file) {
  SqliteFile::Insert insert(file,
                            "create table export (name TEXT PRIMARY KEY, value) without rowid",
                            insert_into("export", 2));
  const auto put_text = [&](std::string_view name, std::string_view value) {
    insert.text(name);
    value.empty() ? insert.null() : insert.text(value);
    insert.put_row();
  };
  const auto put_number = [&](std::string_view name, std::int64_t value) {
    insert.text(name);
    insert.integer(value);
    insert.put_row();
  };
  const Origin origin = origin_of(source);
  put_text("exporter", "cttool " CODETRACE_VERSION_STRING);
  put_text("started_ns", origin.started_ns);
  put_number("open", origin.open);
  put_number("untimed", origin.untimed);
  put_number("moved", origin.moved);
  put_number("damaged", origin.damaged);
  put_number("left_out", nodes_left_out(source));
}

}  // namespace

std::string write_sqlite(const Source& source, const Options& options, const std::string& path) {
  SqliteFile file(path);
  file.run("pragma user_version = " + std::to_string(schema_version));
  file.run("pragma application_id = " + std::to_string(application));
  write_origin_table(source, file);
  write_other_tables(source, options.table, file);
  write_node_tables(source, options.table, file);
  if (is_wanted(Sql::calls_table, options.table)) {
    file.run("create index calls_parent on calls (parent)");
    file.run("create index calls_name on calls (name)");
  }
  // Views look at several tables.
  if (options.table.empty()) {
    for (const char* view : sqlite_views) file.run(view);
  }
  file.finish();
  return file.error();
}

}  // namespace CT::Export
