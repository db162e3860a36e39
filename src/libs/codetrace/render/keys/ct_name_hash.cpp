// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_name_hash.h"

#include <algorithm>
#include <cstring>

#include "codetrace/bytes/ct_utf8.h"

namespace CT {

namespace {

// Writes the decoded form of `stored` to `to`: up to three bytes for each of its bytes.
std::string_view decode(std::string_view stored, char* to) {
  const char* const begin = to;
  constexpr std::uint64_t not_ascii = 0x8080808080808080;
  while (!stored.empty()) {
    std::uint64_t word = 0;
    if (stored.size() >= sizeof word) {
      std::memcpy(&word, stored.data(), sizeof word);
      if ((word & not_ascii) == 0) {
        std::memcpy(to, &word, sizeof word);
        to += sizeof word;
        stored.remove_prefix(sizeof word);
        continue;
      }
    }
    const std::string_view character = take_character(stored);
    std::memcpy(to, character.data(), character.size());
    to += character.size();
  }
  return {begin, static_cast<std::size_t>(to - begin)};
}

}  // namespace

// What stands between two of the places that are kept.
struct HashedText::Part {
  Part(const HashedText& text, std::size_t i) : place(text.place(i)) {
    const std::size_t begin = text.begin_of(i);
    const std::string_view stored = text.stored_.substr(begin, text.begin_of(i + 1) - begin);
    decoded = text.end_.offset != 0 && text.is_as_stored() ? stored : decode(stored, room);
  }

  Place place;
  std::string_view decoded;
  // A character may reach three bytes into the next part.
  char room[3 * (spacing + 3)];
};

HashedText::HashedText(const HashBase& base, std::string_view stored)
    : base_(&base), stored_(stored) {
  Place at;
  for (std::size_t i = 0; begin_of(i) != stored.size(); ++i) {
    if (i != 0) kept_.push_back(at);
    const Part part(*this, i);
    at.before = base.append(at.before, part.decoded);
    at.offset += part.decoded.size();
  }
  end_ = at;
}

// A byte inside a character has its lead among the three before it.
std::size_t HashedText::boundary(std::size_t stored_at) const {
  constexpr std::size_t longest = 4;
  for (std::size_t back = 1; back != longest && back <= stored_at; ++back) {
    std::string_view rest = stored_.substr(stored_at - back);
    const std::size_t size = rest.size();
    take_character(rest);
    if (const std::size_t taken = size - rest.size(); taken > back) return stored_at + taken - back;
  }
  return stored_at;
}

std::size_t HashedText::begin_of(std::size_t i) const {
  return i * spacing < stored_.size() ? boundary(i * spacing) : stored_.size();
}

// The last one that is kept at an offset or before it.
std::size_t HashedText::place_before(std::uint64_t offset) const {
  if (is_as_stored()) {
    const auto i = static_cast<std::size_t>(offset / spacing);
    return i != 0 && (i > kept_.size() || place(i).offset > offset) ? i - 1 : i;
  }
  const auto is_behind = [](std::uint64_t of, const Place& place) { return of < place.offset; };
  const auto behind = std::upper_bound(kept_.begin(), kept_.end(), offset, is_behind);
  return static_cast<std::size_t>(behind - kept_.begin());
}

Residue HashedText::before(std::uint64_t offset) const {
  if (offset == end_.offset) return end_.before;
  const Part part(*this, place_before(offset));
  return base_->append(part.place.before, part.decoded.substr(0, offset - part.place.offset));
}

unsigned char HashedText::byte(std::uint64_t offset) const {
  const Part part(*this, place_before(offset));
  return static_cast<unsigned char>(part.decoded[offset - part.place.offset]);
}

std::uint64_t HashedText::offset_of(std::size_t stored_at) const {
  if (is_as_stored()) return stored_at;
  const std::size_t i = stored_at / spacing;
  const std::size_t begin = begin_of(i);
  char room[3 * spacing];
  return place(i).offset + decode(stored_.substr(begin, stored_at - begin), room).size();
}

NameHashes::Name NameHashes::of(const Section& add_data, const unsigned char* place) {
  auto known = texts_.lower_bound(place);
  const auto begin_of = [](const HashedText& text) { return text.stored().data(); };
  if (known == texts_.end() || begin_of(known->second) > Section::as_chars(place)) {
    const unsigned char* end = place + add_data.text(place).size();
    const auto before = static_cast<std::size_t>(place - add_data.data());
    const void* nul = memrchr(add_data.data(), 0, before);
    const unsigned char* begin =
        nul != nullptr ? static_cast<const unsigned char*>(nul) + 1 : add_data.data();
    const std::string_view stored(Section::as_chars(begin), static_cast<std::size_t>(end - begin));
    known = texts_.try_emplace(end, *base_, stored).first;
  }
  const HashedText& text = known->second;
  const auto at = static_cast<std::size_t>(Section::as_chars(place) - begin_of(text));
  const std::string_view stored = text.stored().substr(at);
  const std::size_t mark = stored.size() - without_byte_order_mark(stored).size();
  const std::size_t boundary = text.boundary(at + mark);
  return {&text, text.offset_of(boundary), boundary - at - mark};
}

}  // namespace CT
