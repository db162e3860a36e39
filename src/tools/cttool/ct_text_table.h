// SPDX-License-Identifier: MIT
//
// A table as aligned text: numbers to the right, words to the left, two blanks between columns. On
// a terminal its last column is cut to the terminal's width.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/cttool/ct_style.h"

namespace CT::Tool {

class TextTable {
 public:
  enum class Align { left, right };
  struct Column {
    std::string title;
    Align align;
  };

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // A cell for each column, as shown_text() made them. Texts are UTF-8.
  void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

  // The lines; none is wider than `width`, which is 0 for any width.
  [[nodiscard]] std::string text(std::size_t width, const Style& style = Style()) const;

 private:
  [[nodiscard]] std::vector<std::size_t> widths() const;

  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

// Columns of the terminal that a descriptor is; 0 if it is none.
std::size_t terminal_width(int descriptor);

// A text of a trace for a person's eyes: control characters, which could command a terminal, are
// shown as \n, \t, \x1b and so on; what is not UTF-8 as U+FFFD.
std::string shown_text(std::string_view stored);

// How many characters wide it is, taking each as one column.
std::size_t shown_width(std::string_view text);

// The text, or its first `width` characters with an ellipsis as the last of them; 0 is any width.
std::string fitted(std::string_view text, std::size_t width);

// The last `width` characters at most of a path or a name, of which the beginning says least; from
// the beginning of a part of it, if one is near.
std::string end_of(const std::string& path, std::size_t width);

// A long text's beginning, for a place in a line.
std::string shortened(std::string_view text, std::size_t width);

}  // namespace CT::Tool
