// SPDX-License-Identifier: MIT
//
// The profile that `top` prints: which calls count, what they are grouped by, and what that comes
// to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_grouping.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_profile.h"
#include "tools/cttool/ct_names.h"

namespace CT::Tool {

// What rows are sorted by, the greatest first.
enum class TopBy : std::uint8_t { own, total, calls, memory };

struct TopChoice {
  TopBy by = TopBy::own;
  GroupBy of = GroupBy::function;
  std::string callers;     // pattern; empty: all calls count
  std::string callees;     // the same
  std::size_t limit = 20;  // 0: all rows
  bool builtin_only = false;
  bool user_only = false;
};

struct TopRow {
  ProfileRow sums;
  const Group* group;  // lives as long as the TopProfile
};

// Own times add up: those of all rows, and of what is in none of them, to the whole.
struct TopResult {
  std::vector<TopRow> rows;      // those that are shown
  std::vector<TopRow> left_out;  // those below the limit
  std::int64_t whole_ns = 0;     // what the nodes that were looked at took
  std::int64_t includes_ns = 0;
  std::int64_t output_ns = 0;
  std::int64_t request_ns = 0;
  std::int64_t other_calls_ns = 0;  // those that the choice leaves out
};

class TopProfile {
 public:
  // Borrows all.
  TopProfile(const TopChoice& choice, const Trace& trace, const Measures& measures)
      : choice_(choice),
        trace_(trace),
        measures_(measures),
        grouping_(trace, measures, choice.of) {}

  // Looks up the patterns. False, after it was said why, if one is none.
  [[nodiscard]] bool find();
  // Requires: find().
  [[nodiscard]] TopResult of(const Scope& scope);

 private:
  [[nodiscard]] bool counts(NodeId id) const;
  void add_range(const Scope::Range& range, TopResult& result, std::vector<ProfileRow>& sums);

  const TopChoice& choice_;
  const Trace& trace_;
  const Measures& measures_;
  Grouping grouping_;
  NamedFunctions callees_;
  NamedFunctions callers_;
};

}  // namespace CT::Tool
