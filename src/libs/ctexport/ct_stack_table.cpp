// SPDX-License-Identifier: MIT
#include "ctexport/ct_stack_table.h"

#include "ctmeasure/ct_elapsed.h"

namespace CT::Export {

namespace {

constexpr std::size_t first_slots = 256;

}  // namespace

void StackTable::clear() {
  entries_.clear();
  entries_.push_back({bottom, -1, 0, bottom});
  slots_.assign(first_slots, bottom);
}

// As many slots as stacks at least: their number is a power of two.
std::size_t StackTable::slot_of(Stack below, std::int32_t frame) const {
  constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;
  constexpr unsigned upper_half = 32;
  const std::uint64_t key =
      (std::uint64_t{below} << upper_half) | static_cast<std::uint32_t>(frame);
  return (key * spread) >> upper_half & (slots_.size() - 1);
}

StackTable::Stack StackTable::push(Stack below, std::int32_t frame) {
  std::size_t slot = slot_of(below, frame);
  for (Stack known = slots_[slot]; known != bottom; known = entries_[known].next) {
    if (entries_[known].below == below && entries_[known].frame == frame) return known;
  }
  if (entries_.size() == slots_.size()) {
    grow();
    slot = slot_of(below, frame);
  }
  entries_.push_back({below, frame, 0, slots_[slot]});
  slots_[slot] = size() - 1;
  return slots_[slot];
}

void StackTable::grow() {
  slots_.assign(2 * slots_.size(), bottom);
  for (Stack stack = bottom + 1; stack != size(); ++stack) {
    Entry& entry = entries_[stack];
    Stack& first = slots_[slot_of(entry.below, entry.frame)];
    entry.next = first;
    first = stack;
  }
}

void StackTable::add(Stack stack, std::int64_t weight) {
  entries_[stack].weight = bounded_sum(entries_[stack].weight, weight);
}

}  // namespace CT::Export
