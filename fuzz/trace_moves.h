// SPDX-License-Identifier: MIT
//
// A trace file taken apart for mutation: header, DATA, ADD DATA. Any bytes of at least a header's
// size can be taken apart; what is put together again has true sizes in its header. The moves
// change one thing at a time and keep the rest well-formed, so that the fuzzer gets behind the
// checks of sizes.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace CT::Fuzz {

// Changes bytes in place; they may become up to `max_size` long.
using MutateBytes = void (*)(std::string& bytes, std::size_t max_size);

class TraceMoves {
 public:
  // Requires: at least 36 bytes.
  TraceMoves(std::string_view bytes, unsigned seed, MutateBytes mutate);

  // One move. The trace does not grow beyond `max_size` bytes.
  void move(std::size_t max_size);

  [[nodiscard]] std::string bytes() const;

 private:
  // A checkpoint in DATA.
  struct Frame {
    std::size_t offset;
    std::size_t size;  // header word and payload
    std::uint32_t word;
  };

  [[nodiscard]] bool big_endian() const;
  [[nodiscard]] std::vector<Frame> frames() const;
  [[nodiscard]] std::size_t size() const {
    return header_.size() + data_.size() + add_data_.size();
  }
  std::size_t below(std::size_t count) { return random_() % count; }
  template <class Items>
  auto& any(Items& items) {
    return items[below(items.size())];
  }

  void change_header();
  void change_checkpoint(std::size_t room);
  void swap_checkpoints(const Frame& a, const Frame& b);
  void set_payload(const Frame& frame, const std::string& payload, std::uint32_t word);
  void repoint(std::string& bytes);
  [[nodiscard]] std::uint64_t any_reference();

  std::string header_;
  std::string data_;
  std::string add_data_;
  std::minstd_rand random_;
  MutateBytes mutate_;
};

}  // namespace CT::Fuzz
