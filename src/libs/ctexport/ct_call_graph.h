// SPDX-License-Identifier: MIT
//
// A call graph: what each function cost by itself, and what its calls of others cost, by the line
// that they stand on. The calls have a table of a fixed size; whoever finds it full writes down
// what is in it and begins anew, so memory is bounded by the functions, whatever the trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codetrace/bytes/ct_plain_array.h"
#include "ctmeasure/ct_elapsed.h"

namespace CT::Export {

// Sums saturate; nothing is negative.
struct Costs {
  std::int64_t time_ns = 0;
  std::int64_t growth = 0;
  std::int64_t calls = 0;

  void add(const Costs& other) {
    time_ns = bounded_sum(time_ns, other.time_ns);
    growth = bounded_sum(growth, other.growth);
    calls = bounded_sum(calls, other.calls);
  }
};

class CallGraph {
 public:
  using Place = std::uint32_t;  // of functions and arcs
  static constexpr Place none = 0xFFFFFFFF;
  static constexpr std::size_t most_arcs = std::size_t{1} << 14;

  // What was spent in a function, and the first of the arcs out of it.
  struct Node {
    Costs self;
    Place first_arc = none;
    Place last_arc = none;
    bool is_there = false;  // something was added since the last clear()
  };
  // Calls of one function by another from one line.
  struct Arc {
    Place caller;
    Place callee;
    std::uint32_t line;
    Place next;          // of the same caller
    Place next_in_slot;  // with the same hash
    std::int64_t count;
    Costs inclusive;
  };

  CallGraph() { clear(); }

  // Functions are numbered by the caller, from 0 on.
  void add_self(Place function, const Costs& costs);
  // Requires: a graph that is not full.
  void add_call(Place caller, Place callee, std::uint32_t line, const Costs& inclusive);
  [[nodiscard]] bool is_full() const { return arcs_.size() == most_arcs; }
  // Forgets all costs and arcs.
  void clear();

  [[nodiscard]] Place size() const { return static_cast<Place>(nodes_.size()); }
  [[nodiscard]] const Node& node(Place function) const { return nodes_[function]; }
  [[nodiscard]] const Arc& arc(Place place) const { return arcs_[place]; }

 private:
  Node& at(Place function);
  Arc& find(Place caller, Place callee, std::uint32_t line);

  std::vector<Node> nodes_;
  PlainArray<Arc> arcs_;
  std::vector<Place> slots_;  // the first arc of each hash
};

}  // namespace CT::Export
