// SPDX-License-Identifier: MIT
//
// A set of nodes, in a bit and a half each, that tells at once how many of a range are in it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codetrace/ct_trace.h"

namespace CT {

class NodeSet {
 public:
  // Of no node.
  NodeSet() = default;
  // Of none of `count` nodes, or of all.
  NodeSet(NodeId count, bool all)
      : words_(static_cast<std::size_t>(count) / bits + 1, all ? ~std::uint64_t{0} : 0) {}

  // Requires, here and below: a number below the count.
  [[nodiscard]] bool has(NodeId id) const { return (words_[word(id)] >> bit(id) & 1) != 0; }
  void add(NodeId id) { words_[word(id)] |= std::uint64_t{1} << bit(id); }
  void remove(NodeId id) { words_[word(id)] &= ~(std::uint64_t{1} << bit(id)); }

  // Makes count() right; to be called again after a change.
  void number() {
    before_.assign(words_.size(), 0);
    for (std::size_t i = 1; i < words_.size(); ++i) {
      before_[i] = before_[i - 1] + std::popcount(words_[i - 1]);
    }
  }
  // How many of the nodes from `first` to `last` are in it. Requires: number().
  [[nodiscard]] std::int32_t count(NodeId first, NodeId last) const {
    return up_to(last) - up_to(first) + (has(first) ? 1 : 0);
  }

 private:
  static constexpr std::size_t bits = 64;

  static std::size_t word(NodeId id) { return static_cast<std::size_t>(id) / bits; }
  static std::size_t bit(NodeId id) { return static_cast<std::size_t>(id) % bits; }
  // Of those up to this one, itself included.
  [[nodiscard]] std::int32_t up_to(NodeId id) const {
    const std::uint64_t behind = bit(id) + 1 == bits ? 0 : ~std::uint64_t{0} << (bit(id) + 1);
    return before_[word(id)] + std::popcount(words_[word(id)] & ~behind);
  }

  std::vector<std::uint64_t> words_;
  std::vector<std::int32_t> before_;  // how many are in the words before each
};

}  // namespace CT
