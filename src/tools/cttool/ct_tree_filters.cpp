// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_tree_filters.h"

#include <CLI/CLI.hpp>

namespace CT::Tool {

void add_tree_filters(CLI::App& command, TreeFilters& filters) {
  command.add_option("--depth", filters.depth, "Nothing deeper; the request is 0.")
      ->option_text("N");
  command.add_option("--min", filters.least, "Nothing that took less; % of the whole.")
      ->option_text("TIME|N%");
  command.add_option("--under", filters.under, "Only what lies under such calls, or a node.")
      ->option_text("PATTERN|ID");
  command.add_option("--hide", filters.nodes.hidden, "Leave such calls out; theirs move up.")
      ->option_text("PATTERN")
      ->expected(1)
      ->take_all();
  command.add_option("--only", filters.nodes.only, "Only such calls and what led to them.")
      ->option_text("PATTERN")
      ->expected(1)
      ->take_all();
  command.add_flag("--no-builtin", filters.nodes.no_builtin, "Leave PHP's own functions out.");
}

}  // namespace CT::Tool
