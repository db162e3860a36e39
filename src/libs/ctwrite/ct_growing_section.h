// SPDX-License-Identifier: MIT
//
// GrowingSection: DATA or ADD DATA while it is written, in memory or in a file. Of a section in a
// file, memory has what was not written yet, or all of it if it is to be looked at again.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ctwrite/ct_bytes.h"
#include "ctwrite/ct_destination.h"

namespace CT::Write {

class GrowingSection {
 public:
  enum class Kept : std::uint8_t { all, until_written };

  // In memory.
  GrowingSection() = default;
  // In a file; borrows the descriptor.
  GrowingSection(int descriptor, Kept kept) noexcept : descriptor_(descriptor), kept_(kept) {}

  [[nodiscard]] std::uint64_t size() const noexcept { return dropped_ + bytes_.size(); }
  // Of these, how many are not in the file. Everything, if there is none.
  [[nodiscard]] std::size_t pending() const noexcept { return bytes_.size() - written_; }

  // What is in memory: the end of the section, the last byte last. Whoever appends reserves room
  // and takes it in; only what is not pending has to stay.
  [[nodiscard]] Bytes& bytes() noexcept { return bytes_; }
  [[nodiscard]] const Bytes& bytes() const noexcept { return bytes_; }

  // Writes what is pending. False if that did not succeed, with errno set: it stays pending, the
  // file is as before (or as close to that as its system can bring it), and the next call tries
  // again. Nothing happens to a section in memory.
  [[nodiscard]] bool flush() noexcept;

  // The whole section, what is in the file and what is pending. False, with errno set.
  [[nodiscard]] bool copy_to(Destination& destination) const noexcept;

 private:
  [[nodiscard]] bool write_pending() noexcept;

  Bytes bytes_;
  std::uint64_t dropped_ = 0;  // bytes at the start of the section that are in the file only
  std::size_t written_ = 0;    // of bytes_: so many are in the file
  int descriptor_ = -1;
  Kept kept_ = Kept::all;
};

}  // namespace CT::Write
