// SPDX-License-Identifier: MIT
//
// PlaceTable: where in ADD DATA something lies already. It holds places and short hashes, eight
// bytes each; what lies there is compared by the caller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

namespace CT::Write {

class PlaceTable {
 public:
  static constexpr std::uint32_t none = 0xFFFFFFFF;

  // The place among those of equal hash for which `is_it(place)` holds; none if there is none.
  template <class IsIt>
  [[nodiscard]] std::uint32_t find(std::uint32_t hash, const IsIt& is_it) const noexcept {
    if (capacity_ == 0) return none;
    for (std::size_t i = hash & (capacity_ - 1);; i = (i + 1) & (capacity_ - 1)) {
      const Slot& slot = slots_[i];
      if (slot.place == none) return none;
      if (slot.hash == hash && is_it(slot.place)) return slot.place;
    }
  }

  // Makes room for one more. False, and nothing has changed, if there is no memory.
  [[nodiscard]] bool reserve() noexcept { return 2 * (size_ + 1) <= capacity_ || grow(); }

  // Requires: room for it; a place that is not none.
  void add(std::uint32_t hash, std::uint32_t place) noexcept {
    put(slots_.get(), capacity_, {hash, place});
    ++size_;
  }

 private:
  struct Slot {
    std::uint32_t hash;
    std::uint32_t place;
  };
  struct Free {
    void operator()(Slot* slots) const noexcept { std::free(slots); }
  };

  static void put(Slot* slots, std::size_t capacity, Slot slot) noexcept {
    std::size_t i = slot.hash & (capacity - 1);
    while (slots[i].place != none) i = (i + 1) & (capacity - 1);
    slots[i] = slot;
  }
  bool grow() noexcept;

  std::unique_ptr<Slot[], Free> slots_;  // one half of them at least has no place
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;  // a power of two, or 0
};

}  // namespace CT::Write
