// SPDX-License-Identifier: MIT
//
// The calls of a trace by function: the calls of one function in the order of their numbers. Made
// in one pass, in four bytes a call.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT::Sql {

class CallIndex {
 public:
  // Of no call.
  CallIndex() = default;
  CallIndex(const Measures& measures, std::size_t functions);

  // Empty for what is no function's number.
  [[nodiscard]] std::span<const NodeId> of(std::int64_t function) const;

 private:
  std::vector<std::int32_t> begins_;  // of each function, and the end of the last
  std::vector<NodeId> calls_;
};

}  // namespace CT::Sql
