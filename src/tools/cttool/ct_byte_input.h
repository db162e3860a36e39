// SPDX-License-Identifier: MIT
//
// The bytes of a file, a pipe or standard input, of which the first can be looked at beforehand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace CT::Tool {

class ByteInput {
 public:
  ByteInput() = default;
  ~ByteInput();
  ByteInput(const ByteInput&) = delete;
  ByteInput& operator=(const ByteInput&) = delete;

  // "-" is standard input, which stays open. False if it cannot be opened, and error() tells.
  bool open(const std::string& name);
  // The first bytes, `size` of them if there are so many; they are read again later.
  std::string_view first(std::size_t size);
  // Up to `size` bytes, 0 at the end, negative on an error, which error() tells.
  std::int64_t read(unsigned char* to, std::size_t size);

  // Whether it can be opened again by its name and is the same then.
  [[nodiscard]] bool is_named_file() const { return is_named_file_; }
  // How many bytes are left of a file on disk; 0 where nobody knows.
  [[nodiscard]] std::uint64_t size() const;
  // Of the system; 0 for none.
  [[nodiscard]] int error() const { return error_; }

 private:
  std::int64_t read_more(unsigned char* to, std::size_t size);

  int descriptor_ = -1;
  bool is_named_file_ = false;
  int error_ = 0;
  std::string first_;  // what was looked at and not read yet
};

}  // namespace CT::Tool
