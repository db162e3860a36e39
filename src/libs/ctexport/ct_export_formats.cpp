// SPDX-License-Identifier: MIT
#include "ctexport/ct_export_formats.h"

#include <algorithm>
#include <array>

#include "ctexport/ct_table_rows.h"
#include "ctsql/ct_tables.h"

namespace CT::Export {

std::span<const Format> formats() {
  static constexpr std::array table = {
      Format{.name = "speedscope",
             .meaning = "flame graphs of time and memory: speedscope.app",
             .prefix = "",
             .suffix = ".speedscope.json",
             .takes_weight = false,
             .takes_values = false,
             .takes_brief_values = false,
             .takes_table = false,
             .is_zipped_at_will = true,
             .write = write_speedscope,
             .write_file = nullptr},
      Format{.name = "chrome",
             .meaning = "a time line: ui.perfetto.dev, profiler.firefox.com",
             .prefix = "",
             .suffix = ".trace.json",
             .takes_weight = false,
             .takes_values = true,
             .takes_brief_values = true,
             .takes_table = false,
             .is_zipped_at_will = true,
             .write = write_chrome,
             .write_file = nullptr},
      Format{.name = "callgrind",
             .meaning = "a call graph: KCachegrind, callgrind_annotate, PhpStorm",
             .prefix = "callgrind.out.",
             .suffix = "",
             .takes_weight = false,
             .takes_values = false,
             .takes_brief_values = false,
             .takes_table = false,
             .is_zipped_at_will = false,
             .write = write_callgrind,
             .write_file = nullptr},
      Format{.name = "folded",
             .meaning = "a stack a line: flamegraph.pl and its kin",
             .prefix = "",
             .suffix = ".folded",
             .takes_weight = true,
             .takes_values = false,
             .takes_brief_values = false,
             .takes_table = false,
             .is_zipped_at_will = false,
             .write = write_folded,
             .write_file = nullptr},
      Format{.name = "jsonl",
             .meaning = "a record of JSON a node: jq, DuckDB",
             .prefix = "",
             .suffix = ".jsonl",
             .takes_weight = false,
             .takes_values = true,
             .takes_brief_values = true,
             .takes_table = false,
             .is_zipped_at_will = true,
             .write = write_jsonl,
             .write_file = nullptr},
      Format{.name = "csv",
             .meaning = "one table: spreadsheets, DuckDB",
             .prefix = "",
             .suffix = ".csv",
             .takes_weight = false,
             .takes_values = true,
             .takes_brief_values = false,
             .takes_table = true,
             .is_zipped_at_will = false,
             .write = write_csv,
             .write_file = nullptr},
      Format{.name = "sqlite",
             .meaning = "a database of all tables: sqlite3 and its kin",
             .prefix = "",
             .suffix = ".sqlite",
             .takes_weight = false,
             .takes_values = false,
             .takes_brief_values = false,
             .takes_table = true,
             .is_zipped_at_will = false,
             .write = nullptr,
             .write_file = write_sqlite},
  };
  return table;
}

const Format* find_format(std::string_view name) {
  const auto all = formats();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const Format& format) { return format.name == name; });
  return found != all.end() ? &*found : nullptr;
}

std::string table_problem(const std::string& table, bool is_filtered) {
  if (table.empty()) return {};
  const Sql::Table* const found = Sql::find_table(table);
  if (found == nullptr || found->rows == Sql::RowSet::above) {
    std::string problem = "there is no table ";
    problem += table;
    problem += "; the tables are";
    for (const Sql::Table* known : Sql::tables()) {
      if (known->rows != Sql::RowSet::above) (problem += ' ') += known->name;
    }
    return problem;
  }
  if (has_nodes(*found) || !is_filtered) return {};
  return std::string("the table ") + found->name +
         " tells of the whole trace; of its rows none can be left out";
}

std::string base_name(std::string_view trace) {
  static constexpr std::array<std::string_view, 5> endings = {".gz", ".xz", ".zst", ".zstd", ".ct"};
  std::string_view base = trace.substr(trace.rfind('/') + 1);
  for (const std::string_view ending : endings) {
    if (base.size() > ending.size() && base.ends_with(ending)) base.remove_suffix(ending.size());
  }
  return std::string(trace == "-" || base.empty() ? "trace" : base);
}

std::string usual_name(const Format& format, const Options& options, std::string_view trace) {
  std::string name = format.prefix;
  name += base_name(trace);
  if (!options.table.empty()) (name += ".") += options.table;
  return name += format.suffix;
}

}  // namespace CT::Export
