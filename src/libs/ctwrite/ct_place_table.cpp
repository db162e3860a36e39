// SPDX-License-Identifier: MIT
#include "ctwrite/ct_place_table.h"

namespace CT::Write {

bool PlaceTable::grow() noexcept {
  constexpr std::size_t first_capacity = 512;
  const std::size_t capacity = capacity_ == 0 ? first_capacity : 2 * capacity_;
  std::unique_ptr<Entry[], Free> grown(static_cast<Entry*>(std::malloc(capacity * sizeof(Entry))));
  if (grown == nullptr) return false;
  for (std::size_t i = 0; i != capacity; ++i) grown[i] = {0, none};
  for (std::size_t i = 0; i != capacity_; ++i) {
    if (entries_[i].place != none) put(grown.get(), capacity, entries_[i]);
  }
  entries_ = std::move(grown);
  capacity_ = capacity;
  return true;
}

}  // namespace CT::Write
