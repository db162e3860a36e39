// SPDX-License-Identifier: MIT
//
// Bytes: a growing array of bytes that tells when there is no memory for more, instead of throwing.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace CT::Write {

class Bytes {
 public:
  Bytes() = default;
  ~Bytes() { std::free(data_); }
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;

  [[nodiscard]] unsigned char* data() noexcept { return data_; }
  [[nodiscard]] const unsigned char* data() const noexcept { return data_; }
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }

  // Makes room for `more` bytes behind the last one; what is there stays, but may move. False, and
  // nothing has changed, if there is no memory.
  [[nodiscard]] bool reserve(std::size_t more) noexcept {
    if (more <= capacity_ - size_) return true;
    constexpr std::size_t first_capacity = 4096;
    const std::size_t needed = size_ + more;
    std::size_t capacity = capacity_ == 0 ? first_capacity : 2 * capacity_;
    if (capacity < needed) capacity = needed;
    void* grown = std::realloc(data_, capacity);
    if (grown == nullptr) grown = std::realloc(data_, capacity = needed);
    if (grown == nullptr) return false;
    data_ = static_cast<unsigned char*>(grown);
    capacity_ = capacity;
    return true;
  }

  // Shortens, or takes in bytes of the room. Requires: no more than the capacity.
  void resize(std::size_t size) noexcept { size_ = size; }

 private:
  unsigned char* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace CT::Write
