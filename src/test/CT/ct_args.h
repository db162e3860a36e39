// SPDX-License-Identifier: MIT
// The run's settings, as the command line gives them.
//
// Reads the process arguments once, in their order, prints what has to be printed about them
// (usage, version, mistakes) and raises the logger's verbosity as each -v is met. Owns copies of
// the names. A mistake is reported on standard error with the usage, and ends the run through
// init's result.
#pragma once

#include <QSet>
#include <QString>

#include "codetrace/ct_version.h"
#include "ct_formats.h"

namespace CT {

struct Args {
  static constexpr char product[] = "Tavrix";
  static constexpr char version[] = CODETRACE_VERSION_STRING;

  bool error = false;          // the exit status when init returns false
  QString output;              // empty: standard output
  QSet<OutputFormat> formats;  // to be written
  QString filename;

  // True: go on; there is a file name and at least one format. False: end with status `error`.
  bool init(int argc, char* const* argv);

  // To standard error after a mistake, else to standard output. `program` may be null.
  static void print_usage(const char* program, bool error);

 private:
  enum class Step { go_on, stop, usage_error };
  Step take(int code, const char* argument, const char* value, const char* program);
};

}  // namespace CT
