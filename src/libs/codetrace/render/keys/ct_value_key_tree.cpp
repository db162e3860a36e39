// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_value_key_tree.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace CT::Checkpoint {

namespace {

template <class Element>
void fill(PlainArray<Element>& array, std::size_t count, Element element) {
  array.clear();
  for (std::size_t i = 0; i != count; ++i) array.push_back(element);
}

// Where a byte of well-formed text stands in the order by UTF-16 code unit: characters beyond
// U+FFFF (F0 to F4) before U+E000 to U+FFFF (EE and EF). The end of a text, 0, stands before all.
std::uint16_t rank(unsigned byte) {
  if (byte >= 0xF0) return static_cast<std::uint16_t>(byte - 1);
  if (byte >= 0xEE) return static_cast<std::uint16_t>(byte + 6);
  return static_cast<std::uint16_t>(byte + 1);
}

}  // namespace

void HashTable::reset(std::size_t count) {
  const std::size_t size = std::bit_ceil(count + count / 4 + 1);
  mask_ = size - 1;
  fill(slots_, size, Slot());
}

std::uint32_t HashTable::add(const Residue& hash, std::uint32_t number) {
  for (std::size_t i = hash.low() & mask_;; i = (i + 1) & mask_) {
    Slot& slot = slots_[i];
    if (slot.number == none) slot = {hash, number};
    if (slot.hash == hash) return slot.number;
  }
}

void KeyTree::sort(const KeyHashes& keys, std::uint32_t* begin, std::uint32_t* end) {
  root_ = static_cast<Index>(end - begin);
  items_.clear();
  std::uint64_t longest = 0;
  std::uint64_t second = 0;  // no two share more
  for (const std::uint32_t* key = begin; key != end; ++key) {
    const std::uint64_t size = keys.size(*key);
    items_.push_back({size, root_, *key, 0, 0});
    second = std::max(second, std::min(longest, size));
    longest = std::max(longest, size);
  }
  items_.push_back({0, none, 0, root_, 0});
  for (std::uint64_t step = std::bit_floor(second); step != 0; step /= 2) grow(keys, step);
  order_children(keys);
  read_off(begin);
}

void KeyTree::count_long_children(std::uint64_t step) {
  for (Index i = root_; i != size(); ++i) items_[i].long_children = 0;
  for (const Item& item : items_) {
    if (is_long(item, step)) ++items_[item.parent].long_children;
  }
}

void KeyTree::hash_long_children(const KeyHashes& keys, std::uint64_t step) {
  hashed_.clear();
  for (Index i = 0; i != size(); ++i) {
    const Item& item = items_[i];
    if (!is_long(item, step)) continue;
    const Item& parent = items_[item.parent];
    if (parent.long_children > 1) {
      hashed_.push_back({keys.before(item.key, parent.size + step), i});
    }
  }
}

// Children of one node that agree for `step` more bytes go below a node of their own. Children of
// different nodes differ before that, so the hash alone tells.
void KeyTree::grow(const KeyHashes& keys, std::uint64_t step) {
  constexpr std::size_t ahead = 16;
  count_long_children(step);
  hash_long_children(keys, step);
  if (hashed_.empty()) return;
  table_.reset(hashed_.size());
  const Index known = size();
  for (std::size_t i = 0; i != hashed_.size(); ++i) {
    if (i + ahead < hashed_.size()) table_.prefetch(hashed_[i + ahead].hash);
    const Index first = table_.add(hashed_[i].hash, hashed_[i].item);
    if (first != hashed_[i].item) join(first, hashed_[i].item, known, step);
  }
  if (size() != known) drop_only_children(known);
}

// Puts one more below the node of the first that agreed, which is made for the second.
void KeyTree::join(Index first, Index other, Index known, std::uint64_t step) {
  const Index parent = items_[other].parent;
  if (items_[first].parent < known) {
    items_.push_back({items_[parent].size + step, parent, items_[first].key, 1, 0});
    items_[first].parent = size() - 1;
  } else {
    --items_[parent].children;
  }
  items_[other].parent = items_[first].parent;
  ++items_[items_[other].parent].children;
}

// A node all of whose children agreed takes the place of its only child, so that there are never
// more nodes than leaves. `known` is the first node of this round.
void KeyTree::drop_only_children(Index known) {
  heirs_.clear();
  Index end = known;
  for (Index i = known; i != size(); ++i) {
    const Item item = items_[i];
    Item& parent = items_[item.parent];
    if (item.parent != root_ && parent.children == 1) {
      parent.size = item.size;
      parent.children = item.children;
      heirs_.push_back(item.parent);
    } else {
      heirs_.push_back(end);
      items_[end++] = item;
    }
  }
  items_.truncate(end);
  for (Index i = 0; i != known; ++i) {
    Index& parent = items_[i].parent;
    if (parent != none && parent >= known) parent = heirs_[parent - known];
  }
}

// Makes of the children of each node a list in ascending order.
void KeyTree::order_children(const KeyHashes& keys) {
  std::size_t counts[258] = {};
  fill(bytes_, size(), std::uint16_t{0});
  for (Index i = 0; i != size(); ++i) {
    const Index parent = items_[i].parent;
    if (i == root_ || items_[i].size == items_[parent].size) continue;
    bytes_[i] = rank(keys.byte(items_[i].key, items_[parent].size));
  }
  for (const std::uint16_t byte : bytes_) ++counts[byte + 1];
  std::partial_sum(std::begin(counts), std::end(counts), std::begin(counts));
  fill(by_byte_, size(), none);
  for (Index i = 0; i != size(); ++i) by_byte_[counts[bytes_[i]]++] = i;
  fill(next_, size(), none);
  for (Item& item : items_) item.children = none;
  for (std::size_t i = size(); i-- != 0;) {
    const Index at = by_byte_[i];
    if (at == root_) continue;
    Index& first = items_[items_[at].parent].children;
    next_[at] = first;
    first = at;
  }
}

void KeyTree::read_off(std::uint32_t* to) const {
  Index at = items_[root_].children;
  while (at != none) {
    if (at >= root_) {
      at = items_[at].children;
      continue;
    }
    *to++ = items_[at].key;
    while (at != none && next_[at] == none) at = items_[at].parent;
    if (at != none) at = next_[at];
  }
}

}  // namespace CT::Checkpoint
