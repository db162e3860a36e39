// SPDX-License-Identifier: MIT
#include "tools/common/ct_failure.h"

#include <cerrno>
#include <cstdio>

#include "tools/common/ct_output.h"

namespace CT::Tool {

int fail(const char* what, const QString& name, const QString& reason) {
  std::fprintf(stderr, "%s %s : %s\n", what, name.toLocal8Bit().constData(),
               reason.toLocal8Bit().constData());
  return 1;
}

int end_of_printing(int status) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  const int error = errno;
  // Nobody waits for a message when the reader of a pipe has left.
  if (error == EPIPE) return 1;
  return fail(write_failed, Output::standard_output_name(), qt_error_string(error));
}

}  // namespace CT::Tool
