// SPDX-License-Identifier: MIT
//
// Trees of folds of small traces as text, for the tests of what they are made of.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "open_trace.h"
#include "tools/cttool/ct_call_line.h"
#include "tools/cttool/ct_tree_choice.h"
#include "tools/cttool/ct_tree_walk.h"

namespace CT::Tool {

inline bool takes_all(const Fold& /*fold*/, std::uint32_t /*depth*/) { return true; }

class Lines final : public TreeSink {
 public:
  bool line(const TreeLine& line) override {
    lines.push_back(line);
    return true;
  }
  std::vector<TreeLine> lines;
};

struct Tree {
  explicit Tree(const std::string& bytes, const NodeFilter& filter = {}, FoldBy by = FoldBy::runs,
                const std::string& under = {}) {
    EXPECT_TRUE(trace.open(CT::Test::as_bytes(bytes), bytes.size()));
    measures = Measures(trace);
    EXPECT_TRUE(find_visible(trace, measures, filter, visible));
    EXPECT_TRUE(scope.find(trace, measures, under));
    folder.emplace(trace, measures, visible, by);
  }

  TreeCut walk(const TakesFold& takes) { return walk_tree(*folder, scope, takes, sink); }
  TreeCut choose(std::size_t limit) {
    const auto chosen = choose_lines(trace, measures, *folder, scope, takes_all, limit);
    EXPECT_LE(chosen.size(), limit);
    EXPECT_TRUE(std::is_sorted(chosen.begin(), chosen.end()));
    return walk([&](const Fold& fold, std::uint32_t) {
      return std::binary_search(chosen.begin(), chosen.end(), fold.first);
    });
  }

  // A line each: indented, with how many there are, total and own time, and what was left out.
  std::string text() {
    NodeLines names(trace, measures);
    std::string text;
    for (const TreeLine& line : sink.lines) {
      text.append(line.depth, ' ');
      text += names.label(line.fold.first);
      if (line.fold.count != 1) text += "*" + std::to_string(line.fold.count);
      text += " " + std::to_string(line.sums.total_ns) + " " + std::to_string(line.sums.own_ns);
      if (line.cut.folds != 0) {
        text += " -" + std::to_string(line.cut.folds) + "/" + std::to_string(line.cut.nodes) + " " +
                std::to_string(line.cut.total_ns);
      }
      text += "\n";
    }
    return text;
  }

  Trace trace;
  Measures measures;
  NodeSet visible;
  Scope scope;
  std::optional<Folder> folder;
  Lines sink;
};

// The whole tree, which is the same in both byte orders.
inline std::string tree(std::string_view text, const NodeFilter& filter = {},
                        FoldBy by = FoldBy::runs, const std::string& under = {}) {
  std::string first;
  for (const CT::Test::BuiltTrace& built : CT::Test::build_traces(text)) {
    Tree tree(built.bytes, filter, by, under);
    EXPECT_EQ(tree.walk(takes_all).folds, 0);
    if (first.empty()) first = tree.text();
    EXPECT_EQ(tree.text(), first);
  }
  return first;
}

inline std::string chosen(std::string_view text, std::size_t limit, const NodeFilter& filter = {}) {
  Tree tree(CT::Test::build_traces(text).front().bytes, filter);
  tree.choose(limit);
  return tree.text();
}

// f calls g, g and h; f calls h and g; f calls nothing; h; f.
inline constexpr std::string_view loop =
    "F: function user \"f\"\nG: function user \"g\"\nH: function internal \"h\"\n"
    "startup @10\n"
    "a: call @10+1 fn F\n"
    "b: call @10+2 fn G\nreturn @10+3 of b\n"
    "c: call @10+3 fn G\nreturn @10+5 of c\n"
    "d: call @10+6 fn H\nreturn @10+7 of d\n"
    "return @10+8 of a\n"
    "e: call @10+10 fn F\n"
    "i: call @10+10 fn H\nreturn @10+14 of i\n"
    "j: call @10+15 fn G\nreturn @10+16 of j\n"
    "return @10+16 of e\n"
    "k: call @10+20 fn F\nreturn @10+21 of k\n"
    "l: call @10+21 fn H\nreturn @10+22 of l\n"
    "m: call @10+22 fn F\nreturn @10+23 of m\n"
    "shutdown @10+30\n";

}  // namespace CT::Tool
