// SPDX-License-Identifier: MIT
//
// The bytes of a file, whatever they are: for verbs that look at what is no whole trace. Where
// CT::File refuses what is too short, too long or no trace at all, here all of it is handed out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>

#include "tools/cttool/ct_byte_input.h"
#include "tools/cttool/ct_decompress.h"

namespace CT::Tool {

class RawInput {
 public:
  // `max_size`: bytes that may come out of an archive, or of what has no size beforehand, such as a
  // pipe; as in Session. A file on disk may have what the largest trace has, and as much again.
  explicit RawInput(std::uint64_t max_size) : max_size_(max_size) {}

  // Reads all bytes of this name; "-" is standard input. It may be a pipe, and it may be an archive
  // of gzip, xz or zstd, which its content tells. False if they cannot be had, and then it was said
  // why on standard error. An archive that is damaged gives what comes out before the damage, if
  // anything does. Opening again starts afresh.
  [[nodiscard]] bool open(const std::string& name);

  // The same without a word, for several files at once: failure() tells.
  [[nodiscard]] bool load(const std::string& name);
  [[nodiscard]] const std::string& failure() const { return failure_; }

  // File::padding zeros follow them, which can be read and which no size counts. They stay where
  // they are until something else is opened.
  [[nodiscard]] std::span<const unsigned char> bytes() const { return {content_.get(), size_}; }

  // What is wrong with the archive, without a full stop; empty if nothing is.
  [[nodiscard]] const std::string& archive_damage() const { return archive_damage_; }

 private:
  struct Free {
    void operator()(unsigned char* bytes) const { std::free(bytes); }
  };

  bool unpack(ByteInput& input, Archive kind);
  bool read_file(ByteInput& input);
  bool read_all(const Decompressor::Read& read, std::uint64_t known_size, std::uint64_t limit);
  bool make_room(std::uint64_t size);
  bool refuse(std::string why);

  std::uint64_t max_size_;
  std::unique_ptr<unsigned char, Free> content_;
  std::size_t size_ = 0;
  std::string failure_;
  std::string archive_damage_;
};

}  // namespace CT::Tool
