// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_tree_text.h"

#include <algorithm>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_notable.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

constexpr std::uint32_t level_columns = 2;
constexpr std::uint32_t deepest_of_all = 40;
constexpr std::size_t memory_columns = 10;
constexpr std::string_view ellipsis = "\xE2\x80\xA6";
constexpr std::string_view times = " \xC3\x97 ";

void put_right(std::string& line, const std::string& text, std::size_t columns) {
  if (text.size() < columns) line.append(columns - text.size(), ' ');
  line += text;
  line += "  ";
}

std::string left_out(std::int64_t nodes, std::string_view words) {
  std::string text(ellipsis);
  text += " ";
  text += as_count(nodes);
  text += words;
  return text;
}

// What was left out under a fold. Where that is everything, its figures say what it took.
std::string tail_of(const TreeLine& line) {
  if (line.cut.folds == 0) return {};
  std::string tail = "  ";
  if (!line.has_lines_under) return tail += left_out(line.cut.nodes, " inside");
  tail += left_out(line.cut.nodes, " more, ");
  tail += as_ms(line.cut.total_ns);
  return tail += " ms";
}

// On a terminal a third of a line may be blank.
std::uint32_t deepest_for(std::size_t width) {
  constexpr std::size_t share = 3;
  const std::size_t fitting = width / share / level_columns;
  return width == 0 ? deepest_of_all
                    : static_cast<std::uint32_t>(std::min<std::size_t>(fitting, deepest_of_all));
}

}  // namespace

TreeText::TreeText(const Trace& trace, const Measures& measures, const Folder& folder, Writer& out,
                   ValueForm form, std::size_t width)
    : trace_(trace),
      measures_(measures),
      folder_(folder),
      out_(out),
      lines_(trace, measures, form),
      form_(form),
      width_(width),
      id_columns_(std::to_string(measures.node_count()).size()),
      deepest_(deepest_for(width)) {
  if (measures.node_count() != 0) {
    time_columns_ = std::max(time_columns_, as_ms(measures[0].total_ns).size());
  }
}

std::string TreeText::figures(const std::string& id, const std::string& total,
                              const std::string& own, const std::string& memory) const {
  std::string line;
  put_right(line, id, id_columns_);
  put_right(line, total, time_columns_);
  put_right(line, own, time_columns_);
  put_right(line, memory, memory_columns);
  return line;
}

std::string TreeText::indentation(std::uint32_t depth) const {
  std::string blanks(std::size_t{level_columns} * std::min(depth, deepest_), ' ');
  if (depth <= deepest_) return blanks;
  blanks += "[";
  blanks += std::to_string(depth);
  blanks += "] ";
  return blanks;
}

// The tail stands even where the text before it must be cut for it.
void TreeText::put(const std::string& figures, std::uint32_t depth, const std::string& text,
                   const std::string& tail) {
  const std::string line = figures + indentation(depth) + text;
  const std::size_t taken = shown_width(tail);
  out_.put(width_ > taken ? fitted(line, width_ - taken) : line);
  out_.put(tail);
  out_.put('\n');
}

void TreeText::put_title() { put(figures("id", "total ms", "own ms", "memory +"), 0, "what", ""); }

std::string TreeText::text_of(const TreeLine& line) {
  if (line.fold.count == 1) return lines_.line(line.fold.first);
  std::string text = lines_.label(line.fold.first);
  text += times;
  text += as_count(line.fold.count);
  const FoldOutcomes outcomes = outcomes_of(trace_, measures_, folder_, line.fold);
  const auto add = [&](std::int64_t count, std::string_view words) {
    if (count == 0) return;
    text += ", ";
    text += as_count(count);
    text += words;
  };
  add(outcomes.threw, " threw");
  add(outcomes.open, " never ended");
  const std::int64_t most = measures_[line.sums.slowest].total_ns;
  if (form_ == ValueForm::none || most == 0) return text;
  text += ", slowest #";
  text += std::to_string(line.sums.slowest);
  text += ": ";
  text += as_ms(most);
  return text;
}

bool TreeText::line(const TreeLine& line) {
  nodes_ += line.fold.count;
  const bool is_span = measures_[line.fold.first].has(Measure::is_span);
  put(figures(std::to_string(line.fold.first), is_span ? as_ms(line.sums.total_ns) : "",
              is_span ? as_ms(line.sums.own_ns) : "",
              is_span && line.sums.has_delta ? as_bytes(line.sums.memory_delta) : ""),
      line.depth, text_of(line), tail_of(line));
  return out_.ok();
}

void TreeText::put_cut(const TreeCut& cut) {
  if (cut.folds == 0) return;
  put(figures("", as_ms(cut.total_ns), "", ""), 0, left_out(cut.nodes, " more"), "");
}

}  // namespace CT::Tool
