// SPDX-License-Identifier: MIT
//
// PlaceIndex: the numbers of functions and classes by their place in ADD DATA. Every call looks up
// its function and every object its class, so it is a flat table with linear probing: a look-up is,
// as a rule, one line of the processor's cache. Qt's hash is seeded for each process, so no file
// can choose its references such that they collide.
#pragma once

#include <QHashFunctions>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace CT {

class PlaceIndex {
 public:
  static constexpr std::uint32_t none = 0xFFFFFFFF;

  // The number of a place, an offset in the section; `none` for one that was never inserted.
  [[nodiscard]] std::uint32_t find(std::uint32_t place) const {
    return slots_.empty() ? none : slots_[slot_of(place)].number;
  }

  // Makes sure that one more place can be inserted. Throws std::bad_alloc, and then nothing has
  // changed.
  void reserve_one() {
    if (2 * (used_ + 1) > slots_.size()) grow();
  }

  // Requires: reserve_one() before it, a place that was never inserted, and a number below `none`.
  void insert(std::uint32_t place, std::uint32_t number) noexcept {
    assert(2 * (used_ + 1) <= slots_.size() && find(place) == none && number != none);
    slots_[slot_of(place)] = {place, number};
    ++used_;
  }

 private:
  static constexpr std::uint32_t line = 8;
  struct Slot {
    std::uint32_t place = 0;
    std::uint32_t number = none;
  };

  // The slot of a place, or the empty one where it belongs. At least half of them are empty.
  [[nodiscard]] std::size_t slot_of(std::uint32_t place) const {
    const std::size_t mask = slots_.size() - 1;
    // Neighbours share a line of the cache.
    std::size_t at = (::qHash(place / line, seed_) * line + place % line) & mask;
    while (slots_[at].number != none && slots_[at].place != place) at = (at + 1) & mask;
    return at;
  }

  void grow() {
    constexpr std::size_t first_size = 64;
    std::vector<Slot> old(slots_.empty() ? first_size : 2 * slots_.size());
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.number != none) slots_[slot_of(slot.place)] = slot;
    }
  }

  std::vector<Slot> slots_;  // as many as a power of two
  std::size_t used_ = 0;
  std::size_t seed_ = QHashSeed::globalSeed();
};

}  // namespace CT
