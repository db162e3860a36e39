// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_view.h"

#include <cstring>

namespace CT {

CheckpointView CheckpointView::revisit(const File& file, std::uint32_t offset) {
  CheckpointView view(file);
  view.first_sighting_ = false;
  view.checkpoint_ = file.data().data() + offset;
  view.read_header();
  return view;
}

bool CheckpointView::step() {
  if (!file_->is_open() || is_broken()) return false;
  const Section& data = file_->data();
  const unsigned char* next =
      checkpoint_ == nullptr ? data.data() : checkpoint_ + header_size + size();
  left_ = static_cast<std::uint64_t>(data.end() - next);
  if (left_ == 0) return false;
  checkpoint_ = next;
  if (left_ < header_size) {
    header_ = 0;
    wanted_ = header_size;
    return false;
  }
  read_header();
  left_ -= header_size;
  if (size() <= left_) return true;
  wanted_ = size();
  return false;
}

namespace Checkpoint {

String get_inline_str(Cursor& cursor) {
  const std::uint64_t size = cursor.u64();
  if (size == 0) return {};
  const unsigned char* text = cursor.position();
  const std::size_t room = cursor.left();
  if (size > room) {
    cursor.bytes(room + 1);
    return {};
  }
  const void* nul = std::memchr(text, 0, room);
  const auto length = nul != nullptr
                          ? static_cast<std::size_t>(static_cast<const unsigned char*>(nul) - text)
                          : room;
  cursor.bytes(size + 1);
  return {Section::as_chars(text), static_cast<std::uint32_t>(length), String::uncuttable};
}

}  // namespace Checkpoint
}  // namespace CT
