// SPDX-License-Identifier: MIT
#include "ctwrite/ct_payload.h"

#include <algorithm>

namespace CT::Write {

void Payload::open() noexcept {
  Bytes& bytes = section_->bytes();
  open_ = true;
  error_ = Error::none;
  start_ = bytes.size();
  at_ = limit_ = nullptr;
  if (section_->size() + Format::header_word_size > most_) return fail(Error::section_too_large);
  if (!bytes.reserve(Format::header_word_size)) return fail(Error::no_memory);
  at_ = at(0);
  set_limit();
}

// For a payload. Requires: room for a header word.
std::size_t Payload::section_room() const noexcept {
  return most_ - section_->size() - Format::header_word_size;
}

// The end of the memory that is there, or of what a payload may have.
void Payload::set_limit() noexcept {
  const std::size_t memory = section_->bytes().capacity() - start_ - Format::header_word_size;
  limit_ = at(0) + std::min({memory, section_room(), std::size_t{Format::largest_payload}});
}

unsigned char* Payload::more_room(std::size_t size) noexcept {
  if (is_closed()) return nullptr;
  const std::size_t before = this->size();
  if (size > Format::largest_payload - before) {
    fail(Error::payload_too_large);
  } else if (before + size > section_room()) {
    fail(Error::section_too_large);
  } else if (!section_->bytes().reserve(Format::header_word_size + before + size)) {
    fail(Error::no_memory);
  }
  if (is_closed()) return nullptr;
  unsigned char* const room = at(0) + before;
  at_ = room + size;
  set_limit();
  return room;
}

void Payload::fail(Error error) noexcept {
  if (is_closed() || error == Error::none) return;
  error_ = error;
  limit_ = at_;
}

void Payload::commit() noexcept {
  section_->bytes().resize(start_ + Format::header_word_size + size());
  take_back();
}

void Payload::take_back() noexcept {
  open_ = false;
  error_ = Error::no_record;
  at_ = limit_ = nullptr;
}

}  // namespace CT::Write
