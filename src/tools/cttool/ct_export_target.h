// SPDX-License-Identifier: MIT
//
// Where an export goes: standard output, or a file that is there only once it is whole.
#pragma once

#include <optional>
#include <string>

#include "codetrace/render/ct_writer.h"
#include "tools/common/ct_output.h"
#include "tools/common/ct_whole_file.h"
#include "tools/cttool/ct_gzip.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

// The name of the file to write, of what the user asked for: empty for standard output, which "-"
// means too. A terminal is no place for an export: there, and if nothing was asked for, a file of
// the usual name is made, if there is none yet. False after it was said why.
[[nodiscard]] bool choose_output(const std::string& wanted, const std::string& usual,
                                 std::string& name);

class ExportTarget {
 public:
  // An empty name is standard output. Borrows: the session.
  ExportTarget(std::string name, bool is_zipped, Session& session);

  // False, after it was said why, if it cannot be written, or if it is the trace of this name.
  [[nodiscard]] bool open(const std::string& trace);
  [[nodiscard]] Writer& out() { return *writer_; }
  // The file that is being written, for what can only be written by its name; empty for a stream.
  [[nodiscard]] std::string file() const;

  // Writes what is in a file. An errno if that cannot be read, or 0.
  [[nodiscard]] int copy(const std::string& path);

  // The end of what was written: the file gets its name. Returns the status, or `failed` with a
  // message if not all arrived.
  [[nodiscard]] int finish(int status);
  // The end of what could not be written, for this reason, which is said: there is no file.
  [[nodiscard]] int give_up(const std::string& reason);

 private:
  [[nodiscard]] QString shown_name() const;
  bool refuse(const QString& reason);

  std::string name_;
  std::optional<WholeFile> whole_;
  std::optional<Output> output_;
  std::optional<GzipSink> gzip_;
  std::optional<StreamWriter> writer_;
  bool is_zipped_;
  Session& session_;
};

}  // namespace CT::Tool
