// SPDX-License-Identifier: MIT
#include "ctredact/ct_add_data_texts.h"

#include <algorithm>

namespace CT::Redact {

AddDataTexts::AddDataTexts(const Section& section)
    : section_(section), noted_(static_cast<std::size_t>(section.size()), false) {}

std::uint32_t AddDataTexts::place_of(std::uint64_t reference) const {
  const unsigned char* const place = section_.resolve(reference);
  return place == nullptr ? none : static_cast<std::uint32_t>(place - section_.data());
}

void AddDataTexts::note(std::uint64_t reference, bool is_kept) {
  const std::uint32_t place = place_of(reference);
  if (place == none) return;
  noted_[place] = true;
  if (is_kept) kept_.push_back(place);
}

void AddDataTexts::finish() {
  std::sort(kept_.begin(), kept_.end());
  const auto size = static_cast<std::uint32_t>(section_.size());
  for (std::uint32_t place = 0; place < size; ++place) {
    if (!noted_[place]) continue;
    const auto length = static_cast<std::uint32_t>(section_.text(section_.data() + place).size());
    const bool is_kept = std::binary_search(kept_.begin(), kept_.end(), place);
    texts_.push_back({place, place + length, is_kept});
    place += length;
  }
  noted_ = {};
  kept_ = {};
}

AddDataTexts::Found AddDataTexts::find(std::uint64_t reference) const {
  const std::uint32_t place = place_of(reference);
  if (place == none) return {};
  const auto behind =
      std::upper_bound(texts_.begin(), texts_.end(), place,
                       [](std::uint32_t at, const Text& text) { return at < text.begin; });
  if (behind == texts_.begin()) return {};
  const Text& text = *(behind - 1);
  if (place > text.end) return {};
  return {static_cast<std::uint32_t>(behind - 1 - texts_.begin()), place - text.begin};
}

}  // namespace CT::Redact
