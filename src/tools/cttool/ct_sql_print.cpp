// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_sql_print.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_text.h"
#include "ctexport/ct_csv_text.h"
#include "ctsql/ct_table.h"
#include "tools/cttool/ct_json_check.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

std::string_view bytes_of(sqlite3_stmt* statement, int column) {
  const void* const bytes = sqlite3_column_type(statement, column) == SQLITE_BLOB
                                ? sqlite3_column_blob(statement, column)
                                : sqlite3_column_text(statement, column);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes),
          static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

// Calls `put` with the number of each column.
template <class Put>
void for_each_column(sqlite3_stmt* statement, const Put& put) {
  for (int i = 0; i != sqlite3_column_count(statement); ++i) put(i);
}

bool is_column_of_json(sqlite3_stmt* statement, int column) {
  const char* const type = sqlite3_column_decltype(statement, column);
  return type != nullptr && std::strcmp(type, Sql::json_type) == 0;
}

// A text of a column of JSON is put as the value that it is. Another part of a compound query may
// have put any text there.
void put_json(sqlite3_stmt* statement, int column, JsonWriter& json) {
  switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL: json.null(); break;
    case SQLITE_INTEGER: json.number(std::int64_t{sqlite3_column_int64(statement, column)}); break;
    case SQLITE_FLOAT: {
      const double value = sqlite3_column_double(statement, column);
      std::isfinite(value) ? json.number(value) : json.word(value > 0 ? "Infinity" : "-Infinity");
      break;
    }
    case SQLITE_TEXT:
      if (is_column_of_json(statement, column) && is_json(bytes_of(statement, column))) {
        put_text(json.out(), bytes_of(statement, column));
        break;
      }
      [[fallthrough]];
    default: json.text(sql_text(statement, column));
  }
}

class CsvPrinter final : public ResultPrinter {
 public:
  explicit CsvPrinter(Writer& out) : out_(out) {}
  void begin_result(sqlite3_stmt* statement) override {
    if (!is_first_) out_.put('\n');
    is_first_ = false;
    const auto names = column_names(statement);
    for_each_column(statement, [&](int i) { put(i, names[static_cast<std::size_t>(i)]); });
    out_.put('\n');
  }
  void put_row(sqlite3_stmt* statement) override {
    for_each_column(statement, [&](int i) { put(i, sql_text(statement, i)); });
    out_.put('\n');
  }

 private:
  void put(int column, std::string_view text) {
    if (column != 0) out_.put(',');
    Export::put_csv(out_, text);
  }

  Writer& out_;
  bool is_first_ = true;
};

class MarkdownPrinter final : public ResultPrinter {
 public:
  explicit MarkdownPrinter(Writer& out) : out_(out) {}
  void begin_result(sqlite3_stmt* statement) override {
    if (!is_first_) out_.put('\n');
    is_first_ = false;
    for (const std::string& name : column_names(statement)) put(name);
    out_.put("|\n");
    for_each_column(statement, [&](int) { out_.put("|---"); });
    out_.put("|\n");
  }
  void put_row(sqlite3_stmt* statement) override {
    for_each_column(statement, [&](int i) { put(sql_text(statement, i)); });
    out_.put("|\n");
  }

 private:
  void put(std::string_view text) {
    out_.put("| ");
    for (const char c : shown_text(text)) {
      // What a reader of Markdown would take for its own.
      if (std::string_view("|\\`*_<>[]").find(c) != std::string_view::npos) out_.put('\\');
      out_.put(c);
    }
    out_.put(' ');
  }

  Writer& out_;
  bool is_first_ = true;
};

class JsonPrinter final : public ResultPrinter {
 public:
  JsonPrinter(std::string trace, Writer& out) : trace_(std::move(trace)), out_(out), json_(out) {}
  void begin() override {
    json_.begin_object();
    json_.key("schema");
    json_.word("cttool.sql/1");
    json_.key("trace");
    json_.text(trace_);
    json_.key("results");
    json_.begin_array();
  }
  void begin_result(sqlite3_stmt* statement) override {
    json_.element();
    json_.begin_object();
    json_.key("columns");
    JsonWriter names(out_, JsonWriter::Form::compact);
    names.begin_array();
    for (const std::string& name : column_names(statement)) {
      names.element();
      names.text(name);
    }
    names.end_array();
    json_.key("rows");
    json_.begin_array();
  }
  void put_row(sqlite3_stmt* statement) override {
    json_.element();
    JsonWriter row(out_, JsonWriter::Form::compact);
    row.begin_array();
    for_each_column(statement, [&](int i) {
      row.element();
      put_json(statement, i, row);
    });
    row.end_array();
  }
  void end_result() override {
    json_.end_array();
    json_.end_object();
  }
  void end() override {
    json_.end_array();
    json_.end_object();
    out_.put('\n');
  }

 private:
  std::string trace_;
  Writer& out_;
  JsonWriter json_;
};

class LinesPrinter final : public ResultPrinter {
 public:
  explicit LinesPrinter(Writer& out) : out_(out) {}
  void begin_result(sqlite3_stmt* statement) override { names_ = column_names(statement); }
  void put_row(sqlite3_stmt* statement) override {
    JsonWriter row(out_, JsonWriter::Form::compact);
    row.begin_object();
    for_each_column(statement, [&](int i) {
      row.begin_key();
      put_json_text(out_, names_[static_cast<std::size_t>(i)]);
      row.end_key();
      put_json(statement, i, row);
    });
    row.end_object();
    out_.put('\n');
  }

 private:
  Writer& out_;
  std::vector<std::string> names_;
};

}  // namespace

std::string sql_text(sqlite3_stmt* statement, int column) {
  const std::string_view bytes = bytes_of(statement, column);
  if (sqlite3_column_type(statement, column) != SQLITE_BLOB) return std::string(bytes);
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "x'";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text += '\'';
}

// Names that are said twice get a number, so that no member of an object hides another.
std::vector<std::string> column_names(sqlite3_stmt* statement) {
  std::vector<std::string> names;
  for_each_column(statement, [&](int i) {
    const char* const name = sqlite3_column_name(statement, i);
    const std::string wanted = name != nullptr ? name : "";
    std::string unique = wanted;
    for (int number = 2; std::find(names.begin(), names.end(), unique) != names.end(); ++number) {
      unique = wanted;
      unique += '_';
      unique += std::to_string(number);
    }
    names.push_back(std::move(unique));
  });
  return names;
}

std::unique_ptr<ResultPrinter> make_result_printer(SqlForm form, const std::string& trace,
                                                   std::size_t width, Writer& out) {
  switch (form) {
    case SqlForm::table: return make_table_printer(width, out);
    case SqlForm::csv: return std::make_unique<CsvPrinter>(out);
    case SqlForm::json: return std::make_unique<JsonPrinter>(trace, out);
    case SqlForm::jsonl: return std::make_unique<LinesPrinter>(out);
    case SqlForm::markdown: return std::make_unique<MarkdownPrinter>(out);
  }
  return nullptr;
}

}  // namespace CT::Tool
