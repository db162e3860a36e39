// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_view.h"

#include <cstring>

namespace CT {

bool CheckpointView::step() {
  if (!file_->is_open() || ended_) return false;
  const Section& data = file_->data();
  const unsigned char* next =
      checkpoint_ == nullptr ? data.data() : checkpoint_ + Format::header_word_size + size();
  auto left = static_cast<std::uint64_t>(data.end() - next);
  if (left == 0) return stop({});
  const auto offset = static_cast<std::uint32_t>(next - data.data());
  if (left < Format::header_word_size) {
    return stop(Broken{offset, true, 0, Format::header_word_size, left});
  }
  header_ = normalise_header(next, file_->big_endian());
  left -= Format::header_word_size;
  if (size() > left) return stop(Broken{offset, false, type(), size(), left});
  checkpoint_ = next;
  return true;
}

bool CheckpointView::stop(std::optional<Broken> why) {
  ended_ = true;
  checkpoint_ = nullptr;
  header_ = 0;
  broken_ = why;
  return false;
}

namespace Checkpoint {

String get_inline_str(Cursor& cursor) {
  const std::uint64_t size = cursor.u64();
  if (size == 0) return {};
  const unsigned char* text = cursor.position();
  const std::size_t room = cursor.left();
  const void* nul = room != 0 ? std::memchr(text, 0, room) : nullptr;
  // Fails where the bytes and the NUL that belong to it are not there.
  cursor.bytes(size < room ? size + 1 : room + 1);
  if (nul == nullptr && size > room) return {};
  const auto length = nul != nullptr
                          ? static_cast<std::size_t>(static_cast<const unsigned char*>(nul) - text)
                          : room;
  return {Section::as_chars(text), static_cast<std::uint32_t>(length), String::uncuttable};
}

}  // namespace Checkpoint
}  // namespace CT
