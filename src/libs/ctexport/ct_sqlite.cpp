// SPDX-License-Identifier: MIT
//
// A database file: the tables of ctsql as real ones. What is not asked of a table but computed on
// the way, the way up from a node, is a view.
#include <string_view>

#include "codetrace/ct_version.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_request_title.h"
#include "ctexport/ct_sqlite_file.h"
#include "ctexport/ct_sqlite_views.h"
#include "ctexport/ct_table_rows.h"
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

void write_table(const Sql::Table& table, const Source& source, Sql::TraceData& data,
                 SqliteFile& file) {
  const auto columns = exported_columns(table, Values::full);
  file.run(create_table(table, columns));
  SqliteFile::Insert insert(file, insert_into(table.name, columns.size()));
  TableRows rows(table, source, data);
  while (file.ok() && rows.next()) {
    for (const Sql::Column* column : columns) rows.put(*column, insert);
    insert.put_row();
  }
}

// What the file was made from: a row a fact.
void write_origin_table(const Source& source, SqliteFile& file) {
  file.run("create table export (name TEXT PRIMARY KEY, value) without rowid");
  SqliteFile::Insert insert(file, insert_into("export", 2));
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
}

}  // namespace

std::string write_sqlite(const Source& source, const Options& /*options*/,
                         const std::string& path) {
  SqliteFile file(path);
  file.run("pragma user_version = " + std::to_string(schema_version));
  file.run("pragma application_id = " + std::to_string(application));
  write_origin_table(source, file);
  Sql::TraceData data(source.trace, source.measures, std::string(source.path));
  for (const Sql::Table* table : Sql::tables()) {
    if (table->rows != Sql::RowSet::above) write_table(*table, source, data, file);
  }
  file.run("create index nodes_parent on nodes (parent)");
  file.run("create index calls_parent on calls (parent)");
  file.run("create index calls_name on calls (name)");
  for (const char* view : sqlite_views) file.run(view);
  file.finish();
  return file.error();
}

}  // namespace CT::Export
