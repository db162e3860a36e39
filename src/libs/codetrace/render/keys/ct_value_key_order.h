// SPDX-License-Identifier: MIT
//
// The members of a map whose keys have names that were not copied: of equal keys the last one, in
// the order of a JSON object. Such keys can be far longer than the file, and PHP itself makes none:
// see docs/json-keys.md for what this and all else in this folder is good for.
#pragma once

#include <memory>

#include "codetrace/render/keys/ct_value_key.h"
#include "codetrace/render/keys/ct_value_key_hashes.h"
#include "codetrace/render/keys/ct_value_key_tree.h"

namespace CT::Checkpoint {

class LongKeyOrder {
 public:
  // Borrows the base.
  explicit LongKeyOrder(const HashBase& base = HashBase::of_process()) : hashes_(base) {}

  // Leaves of members those that are printed, sorted, and returns the end of them.
  // Requires: always texts of the same file.
  MapMember* arrange(const KeyTexts& texts, MapMember* begin, MapMember* end);

 private:
  void keep_last(MapMember* begin, MapMember* end);

  KeyHashes hashes_;
  HashTable table_;
  KeyTree tree_;
  PlainArray<std::uint32_t> kept_;  // numbers of members
  PlainArray<MapMember> sorted_;
};

}  // namespace CT::Checkpoint
