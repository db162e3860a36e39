// SPDX-License-Identifier: MIT
//
// The formats of other programs: one table says what each is called, what it is for, what it takes
// of the options, and what writes it.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "ctexport/ct_format_writers.h"

namespace CT::Export {

struct Format {
  const char* name;
  const char* meaning;  // a few words: what opens it
  // Around the name of the trace in the usual name of a file.
  const char* prefix;
  const char* suffix;
  // What of the options it takes; others make no difference to it.
  bool takes_weight;
  bool takes_values;
  bool takes_brief_values;
  bool takes_table;
  bool is_zipped_at_will;  // those who read it also read it in gzip
  // One of both: as a stream, or into a file that is there and empty; then the result is what went
  // wrong, or nothing.
  void (*write)(const Source& source, const Options& options, Writer& out);
  std::string (*write_file)(const Source& source, const Options& options, const std::string& path);
};

// In the order of the help.
std::span<const Format> formats();

// The format of this name; null if there is none.
const Format* find_format(std::string_view name);

// Why a table cannot be exported, or one of which rows were not chosen; empty if it can.
std::string table_problem(const std::string& table, bool is_filtered);

// The name of a trace without its folder and endings, of which files beside it are called after:
// "request" of "/tmp/request.ct.gz".
std::string base_name(std::string_view trace);

// The usual name of a file: of the export of "/tmp/request.ct.gz" as "callgrind" it is
// "callgrind.out.request".
std::string usual_name(const Format& format, const Options& options, std::string_view trace);

}  // namespace CT::Export
