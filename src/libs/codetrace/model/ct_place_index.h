// SPDX-License-Identifier: MIT
//
// PlaceIndex: functions or classes by their place in ADD DATA. Every call looks up its function and
// every object its class, so it is a flat table with linear probing: a look-up is, as a rule, one
// line of the processor's cache. Qt's hash is seeded for each process, so no file can choose its
// references such that they collide.
#pragma once

#include <QHashFunctions>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace CT {

template <class Entry>
class PlaceIndex {
 public:
  // The entry at a place, an offset in the section; null for one that was never inserted.
  [[nodiscard]] const Entry* find(std::uint32_t place) const {
    return slots_.empty() ? nullptr : slots_[slot_of(place)].entry;
  }

  // Makes sure that one more place can be inserted. Throws std::bad_alloc, and then nothing has
  // changed.
  void reserve_one() {
    if (2 * (used_ + 1) > slots_.size()) grow();
  }

  // Borrows: the entry. Requires: reserve_one() before it, and a place that was never inserted.
  void insert(std::uint32_t place, const Entry& entry) noexcept {
    assert(2 * (used_ + 1) <= slots_.size() && find(place) == nullptr);
    slots_[slot_of(place)] = {place, &entry};
    ++used_;
  }

 private:
  static constexpr std::uint32_t line = 4;
  struct Slot {
    std::uint32_t place = 0;
    const Entry* entry = nullptr;
  };

  // The slot of a place, or the empty one where it belongs. At least half of them are empty.
  [[nodiscard]] std::size_t slot_of(std::uint32_t place) const {
    const std::size_t mask = slots_.size() - 1;
    // Neighbours share a line of the cache.
    std::size_t at = (::qHash(place / line, seed_) * line + place % line) & mask;
    while (slots_[at].entry != nullptr && slots_[at].place != place) at = (at + 1) & mask;
    return at;
  }

  void grow() {
    constexpr std::size_t first_size = 64;
    std::vector<Slot> old(slots_.empty() ? first_size : 2 * slots_.size());
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.entry != nullptr) slots_[slot_of(slot.place)] = slot;
    }
  }

  std::vector<Slot> slots_;  // as many as a power of two
  std::size_t used_ = 0;
  std::size_t seed_ = QHashSeed::globalSeed();
};

}  // namespace CT
