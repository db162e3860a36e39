// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_value_key_order.h"

#include <algorithm>

namespace CT::Checkpoint {

MapMember* LongKeyOrder::arrange(const KeyTexts& texts, MapMember* begin, MapMember* end) {
  hashes_.reset(texts, begin, end);
  keep_last(begin, end);
  tree_.sort(hashes_, kept_.begin(), kept_.end());
  sorted_.clear();
  for (const std::uint32_t number : kept_) sorted_.push_back(begin[number]);
  return std::copy(sorted_.begin(), sorted_.end(), begin);
}

// Equal hashes of whole keys are taken for equal keys.
void LongKeyOrder::keep_last(MapMember* begin, MapMember* end) {
  constexpr std::uint32_t ahead = 16;
  const auto count = static_cast<std::uint32_t>(end - begin);
  table_.reset(count);
  kept_.clear();
  for (std::uint32_t i = 0; i != count; ++i) {
    if (i + ahead < count) table_.prefetch(hashes_.hash(i + ahead));
    const std::uint32_t first = table_.add(hashes_.hash(i), i);
    if (first == i) {
      kept_.push_back(i);
    } else if (begin[first].value < begin[i].value) {
      begin[first] = begin[i];
    }
  }
  const auto is_undef = [&](std::uint32_t number) { return begin[number].is_undef != 0; };
  const std::uint32_t* const kept = std::remove_if(kept_.begin(), kept_.end(), is_undef);
  kept_.truncate(static_cast<std::size_t>(kept - kept_.begin()));
}

}  // namespace CT::Checkpoint
