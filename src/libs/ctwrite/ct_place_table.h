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
      const Entry& entry = entries_[i];
      if (entry.place == none) return none;
      if (entry.hash == hash && is_it(entry.place)) return entry.place;
    }
  }

  // Makes room for one more. False, and nothing has changed, if there is no memory.
  [[nodiscard]] bool reserve() noexcept { return 2 * (size_ + 1) <= capacity_ || grow(); }

  // Requires: room for it; a place that is not none.
  void add(std::uint32_t hash, std::uint32_t place) noexcept {
    put(entries_.get(), capacity_, {hash, place});
    ++size_;
  }

 private:
  struct Entry {
    std::uint32_t hash;
    std::uint32_t place;
  };
  struct Free {
    void operator()(Entry* entries) const noexcept { std::free(entries); }
  };

  static void put(Entry* entries, std::size_t capacity, Entry entry) noexcept {
    std::size_t i = entry.hash & (capacity - 1);
    while (entries[i].place != none) i = (i + 1) & (capacity - 1);
    entries[i] = entry;
  }
  bool grow() noexcept;

  std::unique_ptr<Entry[], Free> entries_;  // one half of them at least has no place
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;  // a power of two, or 0
};

}  // namespace CT::Write
