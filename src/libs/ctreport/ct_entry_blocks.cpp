// SPDX-License-Identifier: MIT
#include "ctreport/ct_entry_blocks.h"

#include <cstring>
#include <utility>

namespace CT::Report {

EntryBlocks::EntryBlocks(Take take)
    : take_(std::move(take)), buffer_(std::make_unique<char[]>(usual_size)), entry_(buffer_.get()) {
  at_ = buffer_.get();
  end_ = buffer_.get() + usual_size;
}

// Asked anew for each block: a stream is made by one of them.
Packer& EntryBlocks::packer() { return total_ < packed_well ? well_ : quick_; }

// Packs the entries up to there; what stands behind them moves to the front.
void EntryBlocks::cut(const char* end) {
  const auto size = static_cast<std::size_t>(end - buffer_.get());
  if (size == 0) return;
  if (is_wanted_) {
    Packer& to = packer();
    to.write({buffer_.get(), size});
    total_ += size;
    is_wanted_ = take_(to.finish(), entries_, Of::entries);
  }
  const auto rest = static_cast<std::size_t>(at_ - end);
  std::memmove(buffer_.get(), end, rest);
  at_ = buffer_.get() + rest;
  entry_ = buffer_.get();
  entries_ = 0;
}

void EntryBlocks::make_room() {
  if (!is_long_) {
    cut(entry_);
    if (static_cast<std::size_t>(end_ - at_) >= max_room) return;
    is_long_ = true;
  }
  const auto size = static_cast<std::size_t>(at_ - buffer_.get());
  if (is_wanted_) packer().write({buffer_.get(), size});
  long_size_ += size;
  at_ = buffer_.get();
}

bool EntryBlocks::end_entry() {
  if (!is_long_) {
    ++entries_;
    return is_wanted_;
  }
  make_room();
  is_long_ = false;
  entry_ = at_;
  if (is_wanted_) is_wanted_ = take_(packer().finish(), 1, Of::one_long_entry);
  total_ += std::exchange(long_size_, 0);
  return is_wanted_;
}

}  // namespace CT::Report
