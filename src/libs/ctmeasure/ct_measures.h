// SPDX-License-Identifier: MIT
//
// What the tree of a trace amounts to: of each node when it began, how long it took by itself and
// with what it called, and what became of the memory. Found once, in one pass, in 40 bytes a node,
// and 16 for what is its own.
//
//   const CT::Measures measures(trace);
//   measures[id].total_ns ... measures.own(id).ns ...
//
// Times are whole nanoseconds since the request's start. They nest: what lies under a node lies
// inside its time, and nodes beside each other do not overlap, whatever the file says. So no time
// is negative, and the own times of all nodes add up to the request's total. What had to be mended
// or guessed for that is marked at the node and counted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codetrace/ct_trace.h"

namespace CT {

// Of one node.
struct Measure {
  // Of `marks`.
  enum Mark : std::uint8_t {
    open = 1,          // it has no end: it ends where its parent ends
    untimed = 2,       // its begin has no time stamp: it starts where the node before it started
    moved = 4,         // its time did not fit into its parent's, or behind the node before it
    has_memory = 8,    // its begin says how much memory was in use
    has_delta = 16,    // and so does its end
    is_span = 32,      // the request, calls, includes and writes take time; all others are points
    end_untimed = 64,  // its end has no time stamp: it ends with the last node under it
  };

  std::int64_t start_ns = 0;
  std::int64_t total_ns = 0;      // from begin to end; 0 for points
  std::uint64_t memory = 0;       // bytes in use at the begin
  std::int64_t memory_delta = 0;  // from begin to end; 0 for points
  std::int32_t function = -1;     // of a call: its place in the trace's functions; else -1
  std::uint8_t marks = 0;

  [[nodiscard]] bool has(Mark mark) const { return (marks & mark) != 0; }
  [[nodiscard]] std::int64_t end_ns() const { return start_ns + total_ns; }
};

static_assert(sizeof(Measure) == 40);

// What is left of a node's figures without those of its children.
struct OwnMeasure {
  std::int64_t ns = 0;      // of its total
  std::int64_t memory = 0;  // of its delta, as far as both have one
};

class Measures {
 public:
  // How many nodes have each mark that is worth a word to the user.
  struct Counts {
    std::int32_t open = 0;
    std::int32_t untimed = 0;  // begin or end
    std::int32_t moved = 0;
  };

  // Of no node.
  Measures() = default;
  // Whether own figures are kept, for who needs those of many nodes in any order.
  enum class Own : std::uint8_t { kept, left_out };
  // Reads the whole trace, which it does not keep. Throws std::bad_alloc.
  explicit Measures(const Trace& trace, Own own = Own::kept);

  [[nodiscard]] NodeId node_count() const { return static_cast<NodeId>(nodes_.size()); }
  // Requires: a number below node_count().
  [[nodiscard]] const Measure& operator[](NodeId id) const {
    return nodes_[static_cast<std::size_t>(id)];
  }
  [[nodiscard]] bool keeps_own() const { return !own_.empty(); }
  // Requires: own figures that were kept.
  [[nodiscard]] const OwnMeasure& own(NodeId id) const {
    return own_[static_cast<std::size_t>(id)];
  }
  [[nodiscard]] const Counts& counts() const { return counts_; }

 private:
  std::vector<Measure> nodes_;
  std::vector<OwnMeasure> own_;
  Counts counts_;
};

// What measures of the trace keep of a node; else it is found from its children, which takes time
// in proportion to how many there are.
OwnMeasure own_of(const Trace& trace, const Measures& measures, NodeId id);

}  // namespace CT
