// SPDX-License-Identifier: MIT
//
// Where a finished trace goes.
#pragma once

#include <cstddef>
#include <span>

namespace CT::Write {

class Destination {
 public:
  Destination() = default;
  virtual ~Destination() = default;
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;

  // Takes all bytes. False if they could not be written, with errno set.
  virtual bool write(std::span<const unsigned char> bytes) noexcept = 0;
};

// An open descriptor, borrowed, at its position.
class DescriptorDestination final : public Destination {
 public:
  explicit DescriptorDestination(int descriptor) noexcept : descriptor_(descriptor) {}
  bool write(std::span<const unsigned char> bytes) noexcept override;

 private:
  int descriptor_;
};

// Memory of the caller. What does not fit is refused with ENOSPC; file_size() of the writer tells
// how much it takes.
class MemoryDestination final : public Destination {
 public:
  explicit MemoryDestination(std::span<unsigned char> room) noexcept : room_(room) {}
  bool write(std::span<const unsigned char> bytes) noexcept override;

 private:
  std::span<unsigned char> room_;
};

}  // namespace CT::Write
