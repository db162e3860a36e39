// SPDX-License-Identifier: MIT
//
// Hashes of any part of long texts, in time that does not depend on its length.
//
// A text is passed over once, from its first byte to its last, and the hash of all before it is
// kept for every 128th of its bytes. The hash of a part follows from those at its ends. So names of
// megabytes can be compared again and again, also when each begins at another byte of one text, and
// nothing is held but these hashes: 24 bytes for 128.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "codetrace/bytes/ct_cursor.h"
#include "codetrace/render/keys/ct_name_hash_base.h"

namespace CT {

// Hashes of one stored text. Offsets are in its decoded bytes, where nothing else is said.
class HashedText {
 public:
  // Borrows both. A leading byte-order mark counts like any character.
  HashedText(const HashBase& base, std::string_view stored);

  [[nodiscard]] std::string_view stored() const { return stored_; }
  [[nodiscard]] std::uint64_t size() const { return end_.offset; }
  [[nodiscard]] const Residue& hash() const { return end_.before; }

  // Of all before `offset`, which is no more than size() and may be inside a character.
  [[nodiscard]] Residue before(std::uint64_t offset) const;
  // Requires: an offset below size().
  [[nodiscard]] unsigned char byte(std::uint64_t offset) const;

  // The stored byte at which a character begins that is not before `stored_at`.
  [[nodiscard]] std::size_t boundary(std::size_t stored_at) const;
  // The offset of a stored byte at which a character begins.
  [[nodiscard]] std::uint64_t offset_of(std::size_t stored_at) const;

 private:
  struct Place {
    Residue before;
    std::uint64_t offset = 0;
  };
  // Decoded bytes of the text around an offset.
  struct Part;

  [[nodiscard]] Place place(std::size_t i) const { return i == 0 ? Place() : kept_[i - 1]; }
  [[nodiscard]] std::size_t begin_of(std::size_t i) const;
  [[nodiscard]] std::size_t place_before(std::uint64_t offset) const;
  [[nodiscard]] bool is_as_stored() const { return end_.offset == stored_.size(); }

  static constexpr std::size_t spacing = 128;

  const HashBase* base_;
  std::string_view stored_;
  std::vector<Place> kept_;  // of the boundary behind every `spacing` stored bytes
  Place end_;
};

// The texts of ADD DATA in which names were asked for.
class NameHashes {
 public:
  // Borrows the base.
  explicit NameHashes(const HashBase& base) : base_(&base) {}

  // A name is the end of a text, from an offset on. Where it begins inside a character, each byte
  // that is left of that is a replacement character of the name, `replaced` in number.
  struct Name {
    const HashedText* text;
    std::uint64_t offset;
    std::size_t replaced;
  };
  // Of the name at a place inside of ADD DATA, always the same. Valid as long as this object.
  Name of(const Section& add_data, const unsigned char* place);

 private:
  const HashBase* base_;
  std::map<const unsigned char*, HashedText> texts_;  // by their ends
};

}  // namespace CT
