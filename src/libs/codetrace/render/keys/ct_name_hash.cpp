// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_name_hash.h"

#include <cstring>

#include "codetrace/bytes/ct_utf8.h"

namespace CT {

TextHash join(const TextHash& head, const TextHash& tail) {
  return {head.value * tail.power + tail.value, head.power * tail.power};
}

TextHash hash_text(std::string_view decoded) {
  constexpr std::uint64_t base = 0x9E3779B97F4A7C15;
  TextHash hash;
  for (const char c : decoded) {
    hash.value = hash.value * base + static_cast<unsigned char>(c) + 1;
    hash.power *= base;
  }
  return hash;
}

TextHash NameHashes::of(const File& file, const unsigned char* place) {
  const unsigned char* end = nullptr;
  const Text& text = text_around(file, place, end);
  const std::string_view stored(Section::as_chars(place), static_cast<std::size_t>(end - place));
  place = end - without_byte_order_mark(stored).size();
  const std::ptrdiff_t nearest = (end - place) / spacing;
  Tails tails = text.kept[static_cast<std::size_t>(nearest)];
  for (const unsigned char* at = end - nearest * spacing; at != place;) {
    --at;
    tails = step_back(tails, at, end);
  }
  return tails.from[0];
}

// The tails one byte before those given.
NameHashes::Tails NameHashes::step_back(const Tails& tails, const unsigned char* to,
                                        const unsigned char* end) {
  std::string_view stored(Section::as_chars(to), static_cast<std::size_t>(end - to));
  const std::size_t size = stored.size();
  const TextHash character = hash_text(take_character(stored));
  const TextHash& behind = tails.from[size - stored.size() - 1];
  return {{join(character, behind), tails.from[0], tails.from[1], tails.from[2]}};
}

const NameHashes::Text& NameHashes::text_around(const File& file, const unsigned char* place,
                                                const unsigned char*& end) {
  const auto known = texts_.lower_bound(place);
  if (known != texts_.end() && known->second.begin <= place) {
    end = known->first;
    return known->second;
  }
  const Section& section = file.add_data();
  end = place + section.text(place).size();
  const void* nul = memrchr(section.data(), 0, static_cast<std::size_t>(place - section.data()));
  const auto* begin = nul != nullptr ? static_cast<const unsigned char*>(nul) + 1 : section.data();
  Text text = {begin, {Tails()}};
  Tails tails;
  for (const unsigned char* at = end; at != begin;) {
    --at;
    tails = step_back(tails, at, end);
    if ((end - at) % spacing == 0) text.kept.push_back(tails);
  }
  return texts_.emplace(end, std::move(text)).first->second;
}

}  // namespace CT
