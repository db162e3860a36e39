// SPDX-License-Identifier: MIT
//
// A tree of folds as JSON: a flat list, for a tree may be deeper than readers of JSON like.
#pragma once

#include "codetrace/render/ct_json.h"
#include "tools/cttool/ct_brief.h"
#include "tools/cttool/ct_node_json.h"
#include "tools/cttool/ct_tree_walk.h"

namespace CT::Tool {

// Writes an element for each fold; the array is begun and ended by the caller.
class TreeJson final : public TreeSink {
 public:
  // Borrows all but the last.
  TreeJson(const Trace& trace, const Measures& measures, const Folder& folder, JsonWriter& out,
           ValueForm form)
      : trace_(trace),
        measures_(measures),
        folder_(folder),
        out_(out),
        lines_(trace, measures, form),
        nodes_(trace, measures),
        form_(form) {}

  bool line(const TreeLine& line) override;
  // An object, or null if nothing was left out.
  void write_cut(const TreeCut& cut);

 private:
  void write_values(const Fold& fold);

  const Trace& trace_;
  const Measures& measures_;
  const Folder& folder_;
  JsonWriter& out_;
  BriefLines lines_;
  NodeJson nodes_;
  ValueForm form_;
};

}  // namespace CT::Tool
