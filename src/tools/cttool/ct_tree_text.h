// SPDX-License-Identifier: MIT
//
// A tree of folds as text: a line a fold, indented, with its figures before it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "codetrace/render/ct_writer.h"
#include "tools/cttool/ct_brief.h"
#include "tools/cttool/ct_tree_walk.h"

namespace CT::Tool {

class TreeText final : public TreeSink {
 public:
  // Borrows all but the last two. Lines are no wider than `width`, which is 0 for any width.
  TreeText(const Trace& trace, const Measures& measures, const Folder& folder, Writer& out,
           ValueForm form, std::size_t width);

  // The line with the names of the columns.
  void put_title();
  bool line(const TreeLine& line) override;
  // A line about what was left out of the outermost folds, if anything was.
  void put_cut(const TreeCut& cut);

  // How many nodes the lines were about.
  [[nodiscard]] std::int64_t nodes() const { return nodes_; }

 private:
  void put(const std::string& figures, std::uint32_t depth, const std::string& text,
           const std::string& tail);
  [[nodiscard]] std::string figures(const std::string& id, const std::string& total,
                                    const std::string& own, const std::string& memory) const;
  [[nodiscard]] std::string indentation(std::uint32_t depth) const;
  [[nodiscard]] std::string text_of(const TreeLine& line);

  const Trace& trace_;
  const Measures& measures_;
  const Folder& folder_;
  Writer& out_;
  BriefLines lines_;
  ValueForm form_;
  std::size_t width_;
  std::size_t id_columns_;
  std::size_t time_columns_ = 8;
  std::uint32_t deepest_;  // to which lines are indented; deeper ones say their depth
  std::int64_t nodes_ = 0;
};

}  // namespace CT::Tool
