// SPDX-License-Identifier: MIT
//
// The calls for which an expression of SQL over the table `calls` is true.
#pragma once

#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT::Tool {

class SqlCondition {
 public:
  // Asks for each call of the trace; an empty expression takes all. False, after it was said why,
  // if it is none.
  [[nodiscard]] bool find(const Trace& trace, const Measures& measures,
                          const std::string& expression);

  [[nodiscard]] bool takes(NodeId id) const {
    return takes_all_ || taken_[static_cast<std::size_t>(id)];
  }

 private:
  bool takes_all_ = true;
  std::vector<bool> taken_;  // by node
};

}  // namespace CT::Tool
