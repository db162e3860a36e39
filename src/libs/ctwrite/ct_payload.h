// SPDX-License-Identifier: MIT
//
// Payload: the record under way, at the end of DATA. It becomes part of the section when it is
// committed; until then it can be taken back, and a record that failed always is.
//
// A failure stays: from then on there is no room, so a record is written straight down and asked
// once, at its end.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codetrace/model/ct_format.h"
#include "ctwrite/ct_growing_section.h"
#include "ctwrite/ct_write_error.h"

namespace CT::Write {

class Payload {
 public:
  // Borrows: the section, to which nothing else is appended while a record is open. It is not to
  // grow above `most` bytes.
  Payload(GrowingSection& section, std::uint32_t most) noexcept : section_(&section), most_(most) {}

  [[nodiscard]] bool is_open() const noexcept { return open_; }
  // Whether nothing more is taken: after a failure, and where no record is open.
  [[nodiscard]] bool is_closed() const noexcept { return error_ != Error::none; }
  [[nodiscard]] Error error() const noexcept { return error_; }

  // Begins a record, with room for its header word. Requires: none is open.
  void open() noexcept;

  // Room for `size` bytes that the caller fills; null if there is none, which is a failure.
  unsigned char* room(std::size_t size) noexcept {
    if (size > static_cast<std::size_t>(limit_ - at_)) return more_room(size);
    unsigned char* const room = at_;
    at_ += size;
    return room;
  }

  // Bytes of the payload so far; of a place that room() gave, how many there were before it.
  [[nodiscard]] std::uint32_t size() const noexcept { return offset_of(at_); }
  [[nodiscard]] std::uint32_t offset_of(const unsigned char* place) const noexcept {
    return static_cast<std::uint32_t>(place - (section_->bytes().data() + start_) -
                                      Format::header_word_size);
  }
  // The place of an offset. Requires: an open record, an offset within its size.
  [[nodiscard]] unsigned char* at(std::uint32_t offset) noexcept {
    return section_->bytes().data() + start_ + Format::header_word_size + offset;
  }
  [[nodiscard]] unsigned char* header_word() noexcept { return section_->bytes().data() + start_; }

  // The first failure counts. No error is none.
  void fail(Error error) noexcept;

  // Makes the record part of the section. Requires: an open one that did not fail.
  void commit() noexcept;
  // Forgets the record.
  void take_back() noexcept;

 private:
  unsigned char* more_room(std::size_t size) noexcept;
  [[nodiscard]] std::size_t section_room() const noexcept;
  void set_limit() noexcept;

  GrowingSection* section_;
  std::uint32_t most_;
  std::size_t start_ = 0;  // of the header word, in the section's bytes
  unsigned char* at_ = nullptr;
  unsigned char* limit_ = nullptr;  // up to here nobody need be asked
  Error error_ = Error::no_record;
  bool open_ = false;
};

}  // namespace CT::Write
