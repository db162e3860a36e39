// SPDX-License-Identifier: MIT
//
// One table as comma-separated values: a line of names, then a line a row. NULL is an empty field.
#include "codetrace/render/ct_number.h"
#include "ctexport/ct_csv_text.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_table_rows.h"
#include "ctsql/ct_node_tables.h"
#include "ctsql/ct_tables.h"

namespace CT::Export {

namespace {

class Fields final : public Sql::Cells {
 public:
  explicit Fields(Writer& out) : out_(out) {}

  void null() override {}
  void integer(std::int64_t value) override { put_signed(out_, value); }
  void real(double value) override { put_double_json(out_, value); }
  void kept_text(std::string_view text) override { text_field(text); }
  void text(std::string_view text) override { text_field(text); }
  void json(std::string_view text) override { text_field(text); }

 private:
  // What tables have is UTF-8 already.
  void text_field(std::string_view text) {
    needs_quotes(text) ? put_csv(out_, text) : out_.put(text);
  }

  Writer& out_;
};

}  // namespace

void write_csv(const Source& source, const Options& options, Writer& out) {
  const Sql::Table& table =
      options.table.empty() ? Sql::calls_table : *Sql::find_table(options.table);
  const auto columns = exported_columns(table, options.values);
  for (const Sql::Column* column : columns) {
    if (column != columns.front()) out.put(',');
    out.put(std::string_view(column->name));
  }
  out.put('\n');
  Sql::TraceData data(source.trace, source.measures, std::string(source.path));
  TableRows rows(table, source, data);
  Fields fields(out);
  while (out.ok() && rows.next()) {
    for (const Sql::Column* column : columns) {
      if (column != columns.front()) out.put(',');
      rows.put(*column, fields);
    }
    out.put('\n');
  }
}

}  // namespace CT::Export
