// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_printer.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tools/common/ct_failure.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

std::string_view environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

bool uses_color(Color wanted, bool is_terminal) {
  if (wanted != Color::automatic) return wanted == Color::always;
  return is_terminal && environment("NO_COLOR").empty() && environment("TERM") != "dumb";
}

Printer::Printer(Session& session)
    : is_terminal_(isatty(STDOUT_FILENO) == 1),
      width_(session.full ? 0 : terminal_width(STDOUT_FILENO)),
      style_(uses_color(session.color, is_terminal_)),
      output_({}, session.standard),
      writer_(output_) {
  if (is_terminal_ && session.pages) pager_.start();
  // Standard output is open already, or its first write says that it is not.
  static_cast<void>(output_.open([](int) { return false; }));
}

void Printer::put(const TextTable& table) { writer_.put(table.text(width_, style_)); }

int Printer::finish(int status) {
  writer_.flush();
  const bool is_paged = pager_.is_running();
  const bool has_arrived = output_.close();
  if (!pager_.finish()) {
    std::fprintf(stderr, "The pager %s cannot be run; --no-pager does without\n",
                 std::getenv("PAGER"));
    return failed;
  }
  if (has_arrived || (is_paged && output_.is_pipe_closed())) return status;
  if (!output_.is_pipe_closed()) fail(write_failed, output_.name(), output_.error_message());
  return failed;
}

}  // namespace CT::Tool
