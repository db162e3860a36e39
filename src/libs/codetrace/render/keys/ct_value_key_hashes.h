// SPDX-License-Identifier: MIT
//
// Hashes of any beginning of the keys of one map, whatever names stand in them: a key is a row of
// pieces of texts that are hashed already, and the hash of all before each piece is kept.
#pragma once

#include <cstdint>
#include <optional>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/render/keys/ct_name_hash.h"
#include "codetrace/render/keys/ct_value_key.h"

namespace CT::Checkpoint {

class KeyHashes {
 public:
  // Borrows the base.
  explicit KeyHashes(const HashBase& base);

  // Takes the keys of members, which are known by their numbers in this row from here on. Borrows
  // the texts, which may not change.
  void reset(const KeyTexts& texts, const MapMember* begin, const MapMember* end);

  // Of the decoded text of a key.
  [[nodiscard]] std::uint64_t size(std::size_t key) const { return keys_[key].size; }
  [[nodiscard]] const Residue& hash(std::size_t key) const { return keys_[key].hash; }
  // The hash of the first `size` of its bytes, no more than there are.
  [[nodiscard]] Residue before(std::size_t key, std::uint64_t size) const;
  // Requires: an offset below its size.
  [[nodiscard]] unsigned char byte(std::size_t key, std::uint64_t offset) const;

 private:
  struct Key {
    std::uint64_t size;
    Residue hash;
    std::uint32_t first_piece;  // up to the first one of the next key
  };
  struct Piece {
    std::uint64_t offset;  // in the key
    Residue difference;    // the hash of the key before it, less that of its text before it
    const HashedText* text;
    std::uint64_t text_offset;
  };
  class Row;

  [[nodiscard]] const Piece& piece_at(std::size_t key, std::uint64_t offset) const;

  const HashBase* base_;
  NameHashes names_;
  HashedText replaced_;              // three replacement characters
  std::optional<HashedText> bytes_;  // all that was copied of the keys
  PlainArray<Key> keys_;             // and one behind the last
  PlainArray<Piece> pieces_;
};

}  // namespace CT::Checkpoint
