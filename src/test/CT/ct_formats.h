// SPDX-License-Identifier: MIT
//
// The outputs of the tool: one table of their options and of what writes them. A run writes those
// that were asked for in the order of the rows, the dump while the file is read.
#pragma once

#include <QHashFunctions>
#include <array>

#include "codetrace/render/ct_document.h"
#include "codetrace/render/ct_file_dump.h"

namespace CT {

enum class OutputFormat { TEXT = 1, SQLITE = 2, HEADERS = 3, BINARY = 4, DUMP = 5, JSON = 6 };

// Qt brings one for enumerations only from 6.5 on.
inline std::size_t qHash(OutputFormat format, std::size_t seed = 0) noexcept {
  return ::qHash(static_cast<int>(format), seed);
}

struct FormatRow {
  OutputFormat format;
  // Its option: short and long form, and what the usage says of it.
  char letter;
  const char* name;
  const char* help;
  // Told to the log before it is written; null for nothing.
  const char* said = nullptr;
  // What writes it before the tree is read, or after; null where that is not so.
  void (*of_file)(const File& file, Writer& out) = nullptr;
  void (*of_tree)(const Storage& storage, Writer& out, const NodeCounter& count) = nullptr;
};

// clang-format off
inline constexpr std::array formats = {
    FormatRow{OutputFormat::HEADERS, 'H', "headers", "Dumps all the Code Trace file headers.",
              "Outputting Code Trace dump file headers", write_headers},
    FormatRow{OutputFormat::BINARY, 'B', "binary", "Outputs the Code Trace binary data as hex.",
              "Outputting Code Trace dump file binary data", write_binary},
    FormatRow{OutputFormat::DUMP, 'D', "dump", "Dumps all the checkpoints in the Code Trace file."},
    FormatRow{OutputFormat::JSON, 'J', "json", "Outputs the Code Trace as a JSON document.",
              "Outputting Code Trace dump file as a JSON document", nullptr, write_json},
    FormatRow{OutputFormat::TEXT, 'T', "text", "Outputs the Code Trace using a human-readable text format.",
              "Outputting Code Trace dump files as TEXT", nullptr, write_text},
    // Accepted, but nothing is written for it.
    FormatRow{OutputFormat::SQLITE, 'S', "sqlite", "Outputs the Code Trace as a SQLITE database."},
};
// clang-format on

}  // namespace CT
