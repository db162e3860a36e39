// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_value_json_sort.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace CT::Checkpoint {

namespace {

constexpr std::size_t prefix_size = sizeof(MapMember::prefix);
// Of a member whose key has a later one that is equal. No value is the first item of a tape.
constexpr std::uint32_t no_value = 0;

std::size_t left(const MapMember& member, std::size_t depth) {
  return member.end - member.begin - depth;
}

// The same with bytes renumbered so that they sort like UTF-16 code units: in well-formed text,
// characters beyond U+FFFF (F0 to F4) stand before U+E000 to U+FFFF (EE and EF).
std::uint64_t in_order(std::uint64_t word) {
  constexpr std::uint64_t tops = 0x8080808080808080;
  if ((word & (word << 1) & (word << 2) & tops) == 0) return word;  // no byte from E0 on
  for (unsigned shift = 0; shift != 64; shift += 8) {
    const std::uint64_t byte = word >> shift & 0xFF;
    const std::uint64_t moved = byte >= 0xF0 ? byte - 2 : byte >= 0xEE ? byte + 5 : byte;
    word += (moved - byte) << shift;
  }
  return word;
}

// Up to eight bytes of a key from `depth` on, the first of them the highest, zeros behind its end.
std::uint64_t prefix_of(std::string_view bytes, const MapMember& member, std::size_t depth) {
  const std::size_t at = member.begin + depth;
  const std::size_t size = left(member, depth);
  std::uint64_t word = 0;
  std::memcpy(&word, bytes.data() + at, std::min(bytes.size() - at, prefix_size));
  if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
  if (size == 0) return 0;
  if (size < prefix_size) word &= ~std::uint64_t{0} << 8 * (prefix_size - size);
  return in_order(word);
}

// How many bytes from `depth` on all keys of a group share, as far as it is looked for: what one
// key makes in vain must not be long.
std::size_t shared(std::string_view bytes, const MapMember* begin, const MapMember* end,
                   std::size_t depth) {
  const char* const first = bytes.data() + begin->begin + depth;
  constexpr std::size_t enough = 64;
  std::size_t most = std::min(left(*begin, depth), enough);
  for (const MapMember* member = begin + 1; member != end && most != 0; ++member) {
    const char* const other = bytes.data() + member->begin + depth;
    most = std::min(most, left(*member, depth));
    if (std::memcmp(first, other, most) == 0) continue;
    most = static_cast<std::size_t>(std::mismatch(first, first + most, other).first - first);
  }
  return most;
}

}  // namespace

MapMember* MemberSorter::sort(std::string_view bytes, MapMember* begin, MapMember* end) {
  groups_.clear();
  groups_.push_back({begin, end, 0});
  while (!groups_.empty()) {
    const Group group = groups_.back();
    groups_.pop_back();
    sort(bytes, group);
  }
  return std::remove_if(begin, end,
                        [](const MapMember& member) { return member.value == no_value; });
}

void MemberSorter::sort(std::string_view bytes, const Group& group) {
  const std::size_t depth =
      group.depth == 0 ? 0 : group.depth + shared(bytes, group.begin, group.end, group.depth);
  for (MapMember* member = group.begin; member != group.end; ++member) {
    member->prefix = prefix_of(bytes, *member, depth);
  }
  // Zeros may be bytes of a key, or stand behind its end.
  const auto size = [&](const MapMember& member) {
    return std::min(left(member, depth), prefix_size);
  };
  const auto is_before = [&](const MapMember& a, const MapMember& b) {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    return size(a) != size(b) ? size(a) < size(b) : a.value < b.value;
  };
  if (!std::is_sorted(group.begin, group.end, is_before)) {
    std::sort(group.begin, group.end, is_before);
  }
  for (MapMember* first = group.begin; first != group.end;) {
    MapMember* last = first;
    while (last + 1 != group.end && last[1].prefix == first->prefix &&
           size(last[1]) == size(*first)) {
      ++last;
    }
    if (size(*first) == prefix_size && first != last) {
      groups_.push_back({first, last + 1, depth + prefix_size});
    } else {
      for (MapMember* member = first; member != last; ++member) member->value = no_value;
    }
    first = last + 1;
  }
}

}  // namespace CT::Checkpoint
