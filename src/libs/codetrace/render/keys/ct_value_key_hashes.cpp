// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_value_key_hashes.h"

#include <algorithm>

namespace CT::Checkpoint {

// Puts the pieces of one key in a row.
class KeyHashes::Row {
 public:
  explicit Row(KeyHashes& hashes) : hashes_(hashes) {}

  void add(const HashedText& text, std::uint64_t begin, std::uint64_t end) {
    if (begin == end) return;
    const Residue difference = before_ - text.before(begin);
    hashes_.pieces_.push_back({size_, difference, &text, begin});
    before_ = difference * hashes_.base_->power(end - begin) + text.before(end);
    size_ += end - begin;
  }
  [[nodiscard]] std::uint64_t size() const { return size_; }
  [[nodiscard]] const Residue& hash() const { return before_; }

 private:
  KeyHashes& hashes_;
  Residue before_;
  std::uint64_t size_ = 0;
};

KeyHashes::KeyHashes(const HashBase& base)
    : base_(&base), names_(base), replaced_(base, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD") {}

void KeyHashes::reset(const KeyTexts& texts, const MapMember* begin, const MapMember* end) {
  keys_.clear();
  pieces_.clear();
  std::size_t from = texts.bytes().size();
  for (const MapMember* member = begin; member != end; ++member) {
    from = std::min<std::size_t>(from, member->begin);
  }
  constexpr std::size_t ahead = 16;
  bytes_.emplace(*base_, texts.bytes().substr(from));
  for (const MapMember* member = begin; member != end; ++member) {
    const auto first_piece = static_cast<std::uint32_t>(pieces_.size());
    Row row(*this);
    std::size_t at = member->begin;
    for (std::size_t i = member->first_name; const auto* name = texts.name(*member, i); ++i) {
      row.add(*bytes_, at - from, name->at - from);
      at = name->at;
      texts.prefetch_name(i + ahead);
      const NameHashes::Name found = names_.of(texts.add_data(), name->place);
      row.add(replaced_, 0, 3 * found.replaced);
      row.add(*found.text, found.offset, found.text->size());
    }
    row.add(*bytes_, at - from, member->end - from);
    keys_.push_back({row.size(), row.hash(), first_piece});
  }
  keys_.push_back({0, {}, static_cast<std::uint32_t>(pieces_.size())});
}

// The last piece that begins at an offset or before it. Every key has one: no text is empty.
const KeyHashes::Piece& KeyHashes::piece_at(std::size_t key, std::uint64_t offset) const {
  const Piece* const first = pieces_.begin() + keys_[key].first_piece;
  const Piece* const last = pieces_.begin() + keys_[key + 1].first_piece;
  const auto is_behind = [](std::uint64_t of, const Piece& piece) { return of < piece.offset; };
  return *(std::upper_bound(first + 1, last, offset, is_behind) - 1);
}

Residue KeyHashes::before(std::size_t key, std::uint64_t size) const {
  const Piece& piece = piece_at(key, size);
  const std::uint64_t inside = size - piece.offset;
  return piece.difference * base_->power(inside) + piece.text->before(piece.text_offset + inside);
}

unsigned char KeyHashes::byte(std::size_t key, std::uint64_t offset) const {
  const Piece& piece = piece_at(key, offset);
  return piece.text->byte(piece.text_offset + (offset - piece.offset));
}

}  // namespace CT::Checkpoint
