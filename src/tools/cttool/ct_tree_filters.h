// SPDX-License-Identifier: MIT
//
// The options by which verbs that go through the whole tree leave parts of it out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/cttool/ct_tree_choice.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

// As the command line has them.
struct TreeFilters {
  std::string under;
  NodeFilter nodes;
  std::optional<std::uint32_t> depth;
  std::string least;

  [[nodiscard]] bool is_hiding() const {
    return !nodes.hidden.empty() || !nodes.only.empty() || nodes.no_builtin;
  }
  [[nodiscard]] bool is_cutting() const {
    return !under.empty() || depth.has_value() || !least.empty();
  }
};

// Borrows the filters.
void add_tree_filters(CLI::App& command, TreeFilters& filters);

}  // namespace CT::Tool
