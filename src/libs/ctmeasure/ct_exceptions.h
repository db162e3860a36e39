// SPDX-License-Identifier: MIT
//
// The exceptions of a request, one entry for each object, however many calls it passed: what it
// says, where it was made, through which calls it went and where that ended.
//
// An exception is told by the handle of its object. PHP gives handles of objects that are gone to
// new ones, so a handle is a new exception as soon as a constructor is called with it, if its class
// is another, or if a function of PHP throws it that nobody called with it.
#pragma once

#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT {

struct Exception {
  // One way up: it was thrown in the first call, and each one called the one before it.
  struct Pass {
    std::vector<NodeId> calls;
    NodeId caught_in;  // the node around the last of them, which did not throw it
    // That is the request itself, or nothing: nobody caught it.
    bool is_uncaught;
  };

  std::uint32_t handle = 0;
  const Checkpoint::ClassEntry* class_entry = nullptr;  // null where it is not known
  // From its constructor, or from what getMessage() gave back later; absent where neither is known.
  Checkpoint::String message;
  // The outermost call of its constructor, whose place is that of the "new"; no_node where PHP made
  // it itself: its place is then that of the first call that threw it.
  NodeId made_by = Storage::no_node;
  std::ptrdiff_t previous = -1;  // the exception that it was made from, by its place in the list
  std::vector<Pass> passes;      // at least one; more where it was thrown again

  [[nodiscard]] NodeId first_thrower() const { return passes.front().calls.front(); }
  [[nodiscard]] bool is_uncaught() const { return passes.back().is_uncaught; }
};

// In the order in which they were thrown first. A value that is no object, as a damaged file may
// have, is left out.
std::vector<Exception> exceptions(const Trace& trace, const Measures& measures);

}  // namespace CT
