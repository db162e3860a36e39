// SPDX-License-Identifier: MIT
//
// A verb's way to standard output, and how wide what it prints may be.
#pragma once

#include <cstddef>
#include <string_view>

#include "codetrace/render/ct_writer.h"
#include "tools/common/ct_output.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

class Printer {
 public:
  // Borrows: the session.
  explicit Printer(Session& session);

  [[nodiscard]] Writer& out() { return writer_; }
  [[nodiscard]] bool ok() const { return writer_.ok(); }
  // Columns of the terminal that standard output is; 0 if it is none.
  [[nodiscard]] std::size_t width() const { return width_; }

  // Hands on what is left. Returns the status, or `failed` with a message if not all arrived.
  [[nodiscard]] int finish(int status);

 private:
  Output output_;
  StreamWriter writer_;
  std::size_t width_ = 0;
};

}  // namespace CT::Tool
