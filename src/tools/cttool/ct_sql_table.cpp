// SPDX-License-Identifier: MIT
//
// Results as aligned text. The first rows of a result decide how wide its columns are; those behind
// them are printed as they come, so that a result of any size needs little memory.
#include <algorithm>
#include <string>
#include <vector>

#include "tools/cttool/ct_sql_print.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

constexpr std::size_t rows_that_decide = 1000;
constexpr std::size_t bytes_that_decide = std::size_t{4} << 20;
// A wider cell pushes the others of its row aside, where nothing has to fit.
constexpr std::size_t widest_column = 60;
constexpr std::size_t gap = 2;

class TablePrinter final : public ResultPrinter {
 public:
  TablePrinter(std::size_t width, Writer& out) : width_(width), out_(out) {}

  void begin_result(sqlite3_stmt* statement) override {
    if (!is_first_) out_.put('\n');
    is_first_ = false;
    titles_.clear();
    for (const std::string& name : column_names(statement)) titles_.push_back(shown_text(name));
    is_number_.assign(titles_.size(), false);
    is_text_.assign(titles_.size(), false);
    rows_.clear();
    bytes_ = 0;
    is_decided_ = false;
  }

  void put_row(sqlite3_stmt* statement) override {
    std::vector<std::string> cells;
    for (std::size_t i = 0; i != titles_.size(); ++i) {
      const auto column = static_cast<int>(i);
      const int type = sqlite3_column_type(statement, column);
      if (!is_decided_ && type != SQLITE_NULL) {
        (type == SQLITE_TEXT || type == SQLITE_BLOB ? is_text_ : is_number_)[i] = true;
      }
      cells.push_back(shown_text(sql_text(statement, column)));
      bytes_ += cells.back().size();
    }
    if (is_decided_) return put_line(cells);
    rows_.push_back(std::move(cells));
    if (rows_.size() == rows_that_decide || bytes_ > bytes_that_decide) decide();
  }

  void end_result() override {
    if (!is_decided_) decide();
  }

 private:
  void decide() {
    is_decided_ = true;
    widths_.clear();
    for (std::size_t i = 0; i != titles_.size(); ++i) {
      std::size_t width = shown_width(titles_[i]);
      for (const auto& row : rows_) width = std::max(width, shown_width(row[i]));
      widths_.push_back(width);
    }
    const std::size_t widest = width_ != 0 ? widest_that_fits() : widest_column;
    for (std::size_t& width : widths_) width = std::min(width, widest);
    put_line(titles_);
    for (const auto& row : rows_) put_line(row);
    rows_.clear();
  }

  // The most that a column may have so that all of them fit: the wide ones are cut first.
  [[nodiscard]] std::size_t widest_that_fits() const {
    constexpr std::size_t least = 4;
    for (std::size_t widest = width_; widest > least; --widest) {
      std::size_t whole = gap * (widths_.size() - 1);
      for (const std::size_t width : widths_) whole += std::min(width, widest);
      if (whole <= width_) return widest;
    }
    return least;
  }

  [[nodiscard]] bool is_right(std::size_t column) const {
    return is_number_[column] && !is_text_[column];
  }

  void put_line(const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i != cells.size(); ++i) {
      const std::string cell = width_ != 0 ? fitted(cells[i], widths_[i]) : cells[i];
      const std::size_t shown = shown_width(cell);
      const std::string blanks(widths_[i] > shown ? widths_[i] - shown : 0, ' ');
      if (i != 0) line.append(gap, ' ');
      if (is_right(i)) line += blanks;
      line += cell;
      if (!is_right(i)) line += blanks;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    line += '\n';
    out_.put(width_ != 0 ? fitted(line, width_ + 1) : line);
  }

  std::size_t width_;
  Writer& out_;
  bool is_first_ = true;
  bool is_decided_ = false;
  std::size_t bytes_ = 0;
  std::vector<std::string> titles_;
  std::vector<bool> is_number_;  // has one
  std::vector<bool> is_text_;
  std::vector<std::size_t> widths_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace

std::unique_ptr<ResultPrinter> make_table_printer(std::size_t width, Writer& out) {
  return std::make_unique<TablePrinter>(width, out);
}

}  // namespace CT::Tool
