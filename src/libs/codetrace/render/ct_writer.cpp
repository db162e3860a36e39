// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_writer.h"

#include <algorithm>

namespace CT {

void Writer::fill(char c, std::size_t count) {
  while (count != 0 && ok_) {
    if (at_ == end_) make_room();
    const std::size_t piece = std::min(count, static_cast<std::size_t>(end_ - at_));
    std::memset(at_, c, piece);
    at_ += piece;
    count -= piece;
  }
}

void Writer::put_in_pieces(std::string_view text) {
  while (!text.empty() && ok_) {
    if (at_ == end_) make_room();
    const std::size_t piece = std::min(text.size(), static_cast<std::size_t>(end_ - at_));
    std::memcpy(at_, text.data(), piece);
    at_ += piece;
    text.remove_prefix(piece);
  }
}

StreamWriter::StreamWriter(Sink& sink) : sink_(sink), buffer_(new char[capacity]) {
  at_ = buffer_.get();
  end_ = at_ + capacity;
}

bool StreamWriter::flush() {
  const std::string_view pending(buffer_.get(), static_cast<std::size_t>(at_ - buffer_.get()));
  if (ok_ && !pending.empty()) ok_ = sink_.write(pending);
  at_ = buffer_.get();
  return ok_;
}

void MemoryWriter::make_room() {
  const std::size_t used = size();
  const std::size_t capacity =
      std::max(2 * static_cast<std::size_t>(end_ - buffer_.get()), 2 * max_room);
  std::unique_ptr<char[]> larger(new char[capacity]);
  if (used != 0) std::memcpy(larger.get(), buffer_.get(), used);
  buffer_ = std::move(larger);
  at_ = buffer_.get() + used;
  end_ = buffer_.get() + capacity;
}

}  // namespace CT
