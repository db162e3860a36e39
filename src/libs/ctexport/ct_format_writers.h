// SPDX-License-Identifier: MIT
//
// What writes each format, for the table of them. A writer that fails drops the rest.
#pragma once

#include "codetrace/render/ct_writer.h"
#include "ctexport/ct_export_source.h"

namespace CT::Export {

void write_speedscope(const Source& source, const Options& options, Writer& out);
void write_chrome(const Source& source, const Options& options, Writer& out);
void write_jsonl(const Source& source, const Options& options, Writer& out);
void write_callgrind(const Source& source, const Options& options, Writer& out);
void write_folded(const Source& source, const Options& options, Writer& out);
// Requires, here and below: options that name a table with rows of its own, or none.
void write_csv(const Source& source, const Options& options, Writer& out);
// Fills a file that is there and empty; returns what went wrong, or nothing.
std::string write_sqlite(const Source& source, const Options& options, const std::string& path);

}  // namespace CT::Export
