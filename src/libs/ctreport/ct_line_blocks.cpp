// SPDX-License-Identifier: MIT
#include "ctreport/ct_line_blocks.h"

#include <cstring>
#include <utility>

namespace CT::Report {

LineBlocks::LineBlocks(Take take)
    : take_(std::move(take)), buffer_(std::make_unique<char[]>(usual_size)), line_(buffer_.get()) {
  at_ = buffer_.get();
  end_ = buffer_.get() + usual_size;
}

// Asked anew for each block: a stream is made by one of them.
Packer& LineBlocks::packer() { return total_ < packed_well ? well_ : fast_; }

// Packs the lines up to there; what stands behind them moves to the front.
void LineBlocks::cut(const char* end) {
  const auto size = static_cast<std::size_t>(end - buffer_.get());
  if (size == 0) return;
  if (is_wanted_) {
    Packer& to = packer();
    to.write({buffer_.get(), size});
    total_ += size;
    is_wanted_ = take_(to.finish(), lines_, Of::lines);
  }
  const auto rest = static_cast<std::size_t>(at_ - end);
  std::memmove(buffer_.get(), end, rest);
  at_ = buffer_.get() + rest;
  line_ = buffer_.get();
  lines_ = 0;
}

void LineBlocks::make_room() {
  if (!is_long_) {
    cut(line_);
    if (static_cast<std::size_t>(end_ - at_) >= max_room) return;
    is_long_ = true;
  }
  const auto size = static_cast<std::size_t>(at_ - buffer_.get());
  if (is_wanted_) packer().write({buffer_.get(), size});
  long_size_ += size;
  at_ = buffer_.get();
}

bool LineBlocks::end_line() {
  put('\n');
  if (!is_long_) {
    ++lines_;
    return is_wanted_;
  }
  make_room();
  is_long_ = false;
  line_ = at_;
  if (is_wanted_) is_wanted_ = take_(packer().finish(), 1, Of::one_long_line);
  total_ += std::exchange(long_size_, 0);
  return is_wanted_;
}

}  // namespace CT::Report
