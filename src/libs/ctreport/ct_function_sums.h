// SPDX-License-Identifier: MIT
//
// What the calls of each function come to, of those that are in a report: for a whole trace the
// rows of a profile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ctexport/ct_span_walk.h"
#include "ctmeasure/ct_elapsed.h"
#include "ctmeasure/ct_profile.h"

namespace CT::Report {

class FunctionSums {
 public:
  explicit FunctionSums(std::size_t functions) : rows_(functions), open_(functions) {}

  // Calls begin and end as they nest. What is no call counts nowhere.
  void begin(const Measure& measure) {
    if (measure.function >= 0) ++open_[index(measure)];
  }
  void end(const Measure& measure, const Export::OwnFigures& figures) {
    if (measure.function < 0) return;
    ProfileRow& row = rows_[index(measure)];
    ++row.calls;
    row.own_ns += figures.own_ns;
    row.own_memory = wrapped_sum(row.own_memory, figures.own_memory);
    // Of the outermost call only, so that recursion counts once.
    if (--open_[index(measure)] == 0) row.total_ns += measure.total_ns;
  }

  [[nodiscard]] const std::vector<ProfileRow>& rows() const { return rows_; }

 private:
  static std::size_t index(const Measure& measure) {
    return static_cast<std::size_t>(measure.function);
  }

  std::vector<ProfileRow> rows_;
  std::vector<std::uint32_t> open_;  // calls of each that are open
};

}  // namespace CT::Report
