// SPDX-License-Identifier: MIT
//
// Finds any of many secrets in a text in one pass: an automaton (Aho and Corasick) of their bytes.
// Its time is that of the text's length, whatever the secrets are; its memory some 21 bytes for
// each byte of them.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace CT::Redact {

class SecretMatcher {
 public:
  static constexpr std::size_t shortest = 6;

  SecretMatcher();

  // `number` is what it will be called. Requires: no build() so far, at least `shortest` bytes, and
  // bytes that were not added before.
  void add(std::string_view secret, std::uint32_t number);
  void build();
  [[nodiscard]] bool is_empty() const { return parents_.size() == 1; }

  // Each place where a secret ends, with the longest that ends there: found(begin, end, number). So
  // are the first bytes of one, `shortest` or more, with "..." behind them: PHP's stack traces show
  // no more of long arguments.
  // Returns how many bytes at the end of the text begin a secret, `shortest` or more, or 0, and one
  // that begins so.
  struct Begun {
    std::size_t size = 0;
    std::uint32_t number = 0;
  };
  template <class Found>
  Begun find(std::string_view text, Found found) const {
    std::uint32_t state = root;
    const std::size_t size = text.size();
    for (std::size_t i = 0; i != size; ++i) {
      if (state == root) {
        while (size - i >= window && !may_begin(text.data() + i)) ++i;
        if (i == size) break;
      } else if (text[i] == '.' && depths_[state] >= shortest && text.substr(i, 3) == "...") {
        found(i - depths_[state], i, numbers_[state]);
      }
      state = step(state, static_cast<unsigned char>(text[i]));
      const std::uint32_t node = ends_[state];
      if (node == no_node) continue;
      const std::size_t end = i + 1;
      found(end - depths_[node], end, numbers_[node]);
    }
    if (depths_[state] < shortest) return {};
    return {depths_[state], numbers_[state]};
  }

  // Whether four characters of base64 (24 bits) stand for three bytes of some secret that would
  // be whole there; false is sure.
  [[nodiscard]] bool may_hold(std::uint32_t three_bytes) const {
    const std::uint32_t bit = mixed(three_bytes);
    return (triples_[bit / 64] >> (bit % 64) & 1) != 0;
  }

 private:
  static constexpr std::uint32_t root = 0;
  static constexpr std::uint32_t no_node = UINT32_MAX;
  static constexpr std::size_t window = 4;
  static constexpr int hash_bits = 16;
  using Bits = std::array<std::uint64_t, (std::size_t{1} << hash_bits) / 64>;

  static std::uint32_t mixed(std::uint32_t value) {
    return (value * 2654435761U) >> (32 - hash_bits);
  }
  static std::uint32_t load(const char* at) {
    std::uint32_t value = 0;
    __builtin_memcpy(&value, at, window);
    return value;
  }
  static void set(Bits& bits, std::uint32_t value) {
    const std::uint32_t bit = mixed(value);
    bits[bit / 64] |= std::uint64_t{1} << (bit % 64);
  }
  [[nodiscard]] bool may_begin(const char* at) const {
    const std::uint32_t bit = mixed(load(at));
    return (starts_[bit / 64] >> (bit % 64) & 1) != 0;
  }

  [[nodiscard]] std::size_t slot_of(std::uint32_t node, unsigned char byte) const;
  [[nodiscard]] std::uint32_t child(std::uint32_t node, unsigned char byte) const;
  [[nodiscard]] std::uint32_t step(std::uint32_t state, unsigned char byte) const;
  std::uint32_t add_child(std::uint32_t node, unsigned char byte, std::uint32_t number);
  void grow();

  std::vector<std::uint32_t> slots_;    // nodes by their parent and byte
  std::vector<std::uint32_t> parents_;  // of each node, as all below
  std::vector<unsigned char> bytes_;
  std::vector<std::uint32_t> depths_;
  std::vector<std::uint32_t> fails_;
  std::vector<std::uint32_t> ends_;     // the node of the longest secret that ends there
  std::vector<std::uint32_t> numbers_;  // of the secret that ends there, or of one that begins so
  Bits starts_ = {};                    // of the first four bytes of secrets
  Bits triples_ = {};                   // of three bytes in a row near their begin
  bool is_built_ = false;
};

}  // namespace CT::Redact
