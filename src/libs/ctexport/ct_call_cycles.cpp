// SPDX-License-Identifier: MIT
//
// Tarjan's strongly connected components, with a stack of its own instead of recursion.
#include "ctexport/ct_call_cycles.h"

#include <algorithm>

namespace CT::Export {

std::size_t CallCycles::slot_of(const Call& call) const {
  constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;
  constexpr unsigned upper_half = 32;
  const std::uint64_t key = (std::uint64_t{call.caller} << upper_half) | call.callee;
  return (key * spread) >> upper_half & (slots_.size() - 1);
}

void CallCycles::add(Function caller, Function callee) {
  if (has_given_up_) return;
  const Call call = {caller, callee, none};
  for (std::uint32_t at = slots_[slot_of(call)]; at != none; at = calls_[at].next) {
    if (calls_[at].caller == caller && calls_[at].callee == callee) return;
  }
  if (calls_.size() == most_calls) {
    has_given_up_ = true;
    return;
  }
  count_ = std::max({count_, caller + 1, callee + 1});
  calls_.push_back(call);
  if (calls_.size() > slots_.size()) {
    slots_.resize(2 * slots_.size());
    fill_slots();
  } else {
    std::uint32_t& first = slots_[slot_of(call)];
    calls_.back().next = first;
    first = static_cast<std::uint32_t>(calls_.size() - 1);
  }
}

void CallCycles::fill_slots() {
  std::fill(slots_.begin(), slots_.end(), none);
  for (std::uint32_t at = 0; at != calls_.size(); ++at) {
    std::uint32_t& first = slots_[slot_of(calls_[at])];
    calls_[at].next = first;
    first = at;
  }
}

void CallCycles::chain_by_caller() {
  slots_.assign(count_, none);
  for (auto at = static_cast<std::uint32_t>(calls_.size()); at != 0; --at) {
    Call& call = calls_[at - 1];
    call.next = slots_[call.caller];
    slots_[call.caller] = at - 1;
  }
}

void CallCycles::find() {
  if (has_given_up_) return;
  chain_by_caller();
  numbers_.assign(count_, 0);
  lowest_.assign(count_, 0);
  cycles_.assign(count_, none);
  finished_.assign(count_, 0);
  for (Function root = 0; root != count_; ++root) {
    if (numbers_[root] == 0) look_at(root);
  }
}

void CallCycles::look_at(Function root) {
  visit(root);
  while (!visits_.empty()) {
    Visit& at = visits_.back();
    if (at.next == none) {
      const Function done = at.function;
      visits_.pop_back();
      leave(done);
      continue;
    }
    const Call& call = calls_[at.next];
    at.next = call.next;
    if (numbers_[call.callee] == 0) {
      visit(call.callee);
    } else if (cycles_[call.callee] == none) {
      lowest_[call.caller] = std::min(lowest_[call.caller], numbers_[call.callee]);
    }
  }
}

void CallCycles::visit(Function function) {
  numbers_[function] = lowest_[function] = ++visited_;
  pending_.push_back(function);
  visits_.push_back({function, slots_[function]});
}

// The first function of a cycle that was met is the last one to be left.
void CallCycles::leave(Function function) {
  finished_[function] = ++left_;
  if (!visits_.empty()) {
    std::uint32_t& above = lowest_[visits_.back().function];
    above = std::min(above, lowest_[function]);
  }
  if (lowest_[function] != numbers_[function]) return;
  Function last = none;
  do {
    last = pending_.back();
    pending_.pop_back();
    cycles_[last] = function;
  } while (last != function);
}

}  // namespace CT::Export
