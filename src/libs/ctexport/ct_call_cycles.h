// SPDX-License-Identifier: MIT
//
// Which functions call each other, directly or by way of others: those of a cycle belong together.
// Each of two functions may call the other without any recursion, at different times, so cycles are
// looked for in who calls whom, not in stacks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codetrace/bytes/ct_plain_array.h"

namespace CT::Export {

class CallCycles {
 public:
  using Function = std::uint32_t;
  // More different calls than any program has; beyond it nothing is known to be in a cycle.
  static constexpr std::size_t most_calls = std::size_t{1} << 17;

  CallCycles() : slots_(first_slots, none) {}

  // One function calls another. Functions are numbered by whoever asks, from 0 on.
  void add(Function caller, Function callee);
  // Once all calls are known. Takes time and memory linear in them.
  void find();

  // Whether both are in the same cycle. Requires: find().
  [[nodiscard]] bool are_together(Function a, Function b) const {
    return a < cycles_.size() && b < cycles_.size() && cycles_[a] == cycles_[b];
  }
  // Whether a call leads back in the order of the functions, which has as few of those as can be
  // told in one look: no cycle is without one. Requires: that both are in the same cycle.
  [[nodiscard]] bool leads_back(Function caller, Function callee) const {
    return finished_[callee] > finished_[caller];
  }
  // Whether there were more different calls than are kept.
  [[nodiscard]] bool has_given_up() const { return has_given_up_; }

 private:
  static constexpr std::uint32_t none = 0xFFFFFFFF;
  static constexpr std::size_t first_slots = 1024;

  struct Call {
    Function caller;
    Function callee;
    std::uint32_t next;  // with the same hash; then: the place of the next one of the same caller
  };
  [[nodiscard]] std::size_t slot_of(const Call& call) const;
  void fill_slots();
  void chain_by_caller();
  void look_at(Function root);
  void visit(Function function);
  void leave(Function function);

  PlainArray<Call> calls_;
  std::vector<std::uint32_t> slots_;     // the first call of each hash; then of each caller
  std::vector<std::uint32_t> cycles_;    // by function, as all below
  std::vector<std::uint32_t> finished_;  // when all that it leads to was looked at
  Function count_ = 0;                   // of functions
  bool has_given_up_ = false;

  struct Visit {
    Function function;
    std::uint32_t next;  // the call to follow
  };
  // While find() works.
  PlainArray<Visit> visits_;
  PlainArray<Function> pending_;        // those of which the cycle is not known
  std::vector<std::uint32_t> numbers_;  // in the order of the visits, from 1
  std::vector<std::uint32_t> lowest_;   // the lowest number that is reached from there
  std::uint32_t visited_ = 0;
  std::uint32_t left_ = 0;
};

}  // namespace CT::Export
