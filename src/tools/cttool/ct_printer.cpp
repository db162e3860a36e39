// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_printer.h"

#include <unistd.h>

#include "tools/common/ct_failure.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

Printer::Printer(Session& session) : output_({}, session.standard), writer_(output_) {
  // Standard output is open already, or its first write says that it is not.
  static_cast<void>(output_.open([](int) { return false; }));
  width_ = terminal_width(STDOUT_FILENO);
}

int Printer::finish(int status) {
  writer_.flush();
  if (output_.close()) return status;
  if (!output_.is_pipe_closed()) fail(write_failed, output_.name(), output_.error_message());
  return failed;
}

}  // namespace CT::Tool
