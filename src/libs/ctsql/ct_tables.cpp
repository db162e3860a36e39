// SPDX-License-Identifier: MIT
#include "ctsql/ct_tables.h"

#include "ctsql/ct_entity_tables.h"
#include "ctsql/ct_node_tables.h"
#include "ctsql/ct_sqlite.h"

namespace CT::Sql {

namespace {

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size()), ' ');
  return text;
}

}  // namespace

std::span<const Table* const> tables() {
  static constexpr std::array all = {
      &request_table,  &nodes_table,     &calls_table,   &functions_table, &classes_table,
      &includes_table, &writes_table,    &headers_table, &sent_table,      &errors_table,
      &events_table,   &ancestors_table, &repeats_table,
  };
  return all;
}

const Table* find_table(std::string_view name) {
  const std::string wanted(name);
  for (const Table* table : tables()) {
    if (sqlite3_stricmp(table->name, wanted.c_str()) == 0) return table;
  }
  return nullptr;
}

std::string schema_text(const Table& table) {
  std::string text = table.name;
  text += ": ";
  text += table.meaning;
  text += '\n';
  for (const Column& column : table.columns) {
    constexpr std::size_t name_width = 13;
    constexpr std::size_t type_width = 8;
    if (column.key == Key::given) continue;
    text += "  ";
    text += padded(column.name, name_width);
    text += ' ';
    text += padded(column.type == json_type ? "JSON" : column.type, type_width);
    text += column.meaning;
    text += '\n';
  }
  return text;
}

std::string schema_text() {
  std::string text;
  for (const Table* table : tables()) {
    if (!text.empty()) text += '\n';
    text += schema_text(*table);
  }
  return text +
         "\nfunctions of this program beside SQLite's own\n"
         "  x regexp y    whether a regular expression (PCRE) is found in x; (?i) for any case\n"
         "  plain(x)      a JSON scalar as value: plain('\"a\"') is a, plain('true') is 1\n";
}

std::string declaration(const Table& table) {
  std::string text = "create table x(";
  for (const Column& column : table.columns) {
    if (&column != table.columns.data()) text += ", ";
    text += '"';
    text += column.name;
    text += "\" ";
    text += column.type;
    if (column.key == Key::given) text += " hidden";
  }
  return text + ")";
}

}  // namespace CT::Sql
