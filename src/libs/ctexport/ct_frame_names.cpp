// SPDX-License-Identifier: MIT
#include "ctexport/ct_frame_names.h"

#include <algorithm>

namespace CT::Export {

void FrameNames::put_unknown(std::int32_t number, Writer& out) {
  constexpr std::size_t most = std::size_t{1} << 20;
  const Frame& frame = frames_[number];
  if (!frames_.has_short_name(frame)) return frames_.put_name(frame, out, put_);
  if (texts_.size() > most) {
    texts_.clear();
    std::fill(slots_.begin(), slots_.end(), Slot());
  }
  const auto at = static_cast<std::size_t>(number);
  if (slots_.size() <= at) slots_.resize(at + 1);
  const std::size_t begin = texts_.size();
  frames_.put_name(frame, texts_, put_);
  slots_[at] = {static_cast<std::uint32_t>(begin),
                static_cast<std::uint32_t>(texts_.size() - begin)};
  out.put(texts_.view().substr(begin));
}

}  // namespace CT::Export
