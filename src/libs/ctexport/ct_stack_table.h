// SPDX-License-Identifier: MIT
//
// Weights by stack: each stack that is met is known once, and those that were met often take no
// more room. The table has a fixed size; whoever finds it full writes down what is in it and begins
// anew, so memory is bounded, whatever the trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codetrace/bytes/ct_plain_array.h"

namespace CT::Export {

class StackTable {
 public:
  using Stack = std::uint32_t;
  static constexpr Stack bottom = 0;  // the stack of no frame
  static constexpr std::size_t most = std::size_t{1} << 14;

  struct Entry {
    Stack below;         // the same without its innermost frame
    std::int32_t frame;  // the innermost; -1 of the bottom
    std::int64_t weight;
    Stack next;  // with the same hash; bottom for none
  };

  StackTable() { clear(); }

  // Forgets all stacks and their weights.
  void clear();
  [[nodiscard]] bool is_full() const { return entries_.size() == most; }
  [[nodiscard]] Stack size() const { return static_cast<Stack>(entries_.size()); }
  [[nodiscard]] const Entry& operator[](Stack stack) const { return entries_[stack]; }

  // The stack with one frame more. Requires: a table that is not full.
  Stack push(Stack below, std::int32_t frame);
  // The sum saturates. Requires: no negative weight.
  void add(Stack stack, std::int64_t weight);

 private:
  [[nodiscard]] std::size_t slot_of(Stack below, std::int32_t frame) const;
  void grow();

  PlainArray<Entry> entries_;
  std::vector<Stack> slots_;  // the first stack of each hash
};

}  // namespace CT::Export
