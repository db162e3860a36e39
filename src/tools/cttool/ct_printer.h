// SPDX-License-Identifier: MIT
//
// A verb's way to standard output: how wide what it prints may be, with which colours, and on a
// terminal the pager.
#pragma once

#include <cstddef>
#include <string_view>

#include "codetrace/render/ct_writer.h"
#include "tools/common/ct_output.h"
#include "tools/cttool/ct_pager.h"
#include "tools/cttool/ct_style.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

class TextTable;

class Printer {
 public:
  // Borrows: the session. What is said on standard error behind this may be hidden by the pager
  // until finish().
  explicit Printer(Session& session);

  [[nodiscard]] Writer& out() { return writer_; }
  [[nodiscard]] bool ok() const { return writer_.ok(); }
  // Columns of the terminal that standard output is; 0 if it is none, or if nothing is to be cut.
  [[nodiscard]] std::size_t width() const { return width_; }
  [[nodiscard]] const Style& style() const { return style_; }
  [[nodiscard]] bool is_terminal() const { return is_terminal_; }

  // A table in that width and these colours.
  void put(const TextTable& table);

  // Hands on what is left, and waits for the user to leave the pager. Returns the status, or
  // `failed` with a message if not all arrived.
  [[nodiscard]] int finish(int status);

 private:
  bool is_terminal_;
  std::size_t width_;
  Style style_;
  Pager pager_;
  Output output_;
  StreamWriter writer_;
};

// Whether to use colours on standard output.
bool uses_color(Color wanted, bool is_terminal);

}  // namespace CT::Tool
