// SPDX-License-Identifier: MIT
//
// Sorts keys of any length without reading more of them than hashes ask for: not the printed
// length, but the number of keys and the logarithm of their length say how long it takes.
//
// The keys become the leaves of a tree whose nodes are the beginnings that two or more share. It
// grows in rounds: with steps of falling powers of two, the children of each node that agree for
// one more step get a node of their own. After the step of one byte, the next byte tells all
// children of a node apart, and the leaves can be read off in order.
#pragma once

#include <cstdint>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/render/keys/ct_value_key_hashes.h"

namespace CT::Checkpoint {

// Numbers found by hashes; keeps its memory.
class HashTable {
 public:
  // Empty, with room for `count` hashes.
  void reset(std::size_t count);
  // The number that was first added with this hash, which may be this one.
  std::uint32_t add(const Residue& hash, std::uint32_t number);
  // Asks for the memory that `add` will need.
  void prefetch(const Residue& hash) const {
    __builtin_prefetch(slots_.begin() + (hash.low() & mask_), 1);
  }

 private:
  static constexpr std::uint32_t none = 0xFFFFFFFF;
  struct Slot {
    Residue hash;
    std::uint32_t number = none;
  };
  PlainArray<Slot> slots_;  // a power of two of them
  std::size_t mask_ = 0;
};

class KeyTree {
 public:
  // Sorts the numbers of keys, no two of which are equal, by the order of the keys of a JSON object
  // (see json_key_less).
  void sort(const KeyHashes& keys, std::uint32_t* begin, std::uint32_t* end);

 private:
  using Index = std::uint32_t;
  // A leaf or a node behind the leaves, of which the first is the root.
  struct Item {
    std::uint64_t size;  // of the key, or of the beginning that all below share
    Index parent;
    Index key;            // its own, or any below
    Index children;       // how many; in the end the first of them
    Index long_children;  // how many may agree for one more step
  };

  void grow(const KeyHashes& keys, std::uint64_t step);
  void count_long_children(std::uint64_t step);
  void hash_long_children(const KeyHashes& keys, std::uint64_t step);
  void join(Index first, Index other, Index known, std::uint64_t step);
  void drop_only_children(Index known);
  void order_children(const KeyHashes& keys);
  void read_off(std::uint32_t* to) const;

  // Whether a leaf or node goes on for a step behind what it shares with its siblings.
  [[nodiscard]] bool is_long(const Item& item, std::uint64_t step) const {
    return item.parent != none && item.size >= items_[item.parent].size + step;
  }
  [[nodiscard]] Index size() const { return static_cast<Index>(items_.size()); }

  static constexpr Index none = 0xFFFFFFFF;
  Index root_ = 0;  // also the number of leaves
  PlainArray<Item> items_;
  // Of one round: what goes on for a step and has siblings of its kind, with the hash up to there.
  struct Hashed {
    Residue hash;
    Index item;
  };
  PlainArray<Hashed> hashed_;
  HashTable table_;
  PlainArray<Index> heirs_;    // of the nodes of one round: where they went
  PlainArray<Index> next_;     // the sibling behind an item
  PlainArray<Index> by_byte_;  // items, sorted by the byte behind what they share with siblings
  PlainArray<std::uint16_t> bytes_;
};

}  // namespace CT::Checkpoint
