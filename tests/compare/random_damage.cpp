// SPDX-License-Identifier: MIT
#include "random_damage.h"

#include <algorithm>
#include <array>
#include <optional>

#include "checkpoint_draft.h"

namespace CT::Test {

namespace {

constexpr std::size_t flags_at = 3;
constexpr std::size_t origins_at = 20;
constexpr std::uint32_t largest_payload = 0xFFFFFF;

void set_word(TraceParts& parts, const Frame& frame, std::size_t type, std::size_t flags,
              std::size_t size) {
  const std::string word =
      header_word(parts.order(), static_cast<std::uint8_t>(type), static_cast<std::uint8_t>(flags),
                  static_cast<std::uint32_t>(size));
  parts.data.replace(frame.offset, word.size(), word);
}

}  // namespace

std::string RandomDamage::inside(std::string_view file) {
  std::optional<TraceParts> parts = TraceParts::of(file);
  if (!parts) return std::string(file);
  for (std::size_t left = 1 + random_.below(4); left != 0; --left) one(*parts);
  return parts->bytes();
}

void RandomDamage::one(TraceParts& parts) {
  switch (random_.below(16)) {
    case 0:
    case 1:
    case 2: cut_payload(parts); break;
    case 3:
    case 4: change_word(parts); break;
    case 5:
    case 6: flip_bits(any_section(parts)); break;
    case 7: cut_end(any_section(parts)); break;
    case 8: duplicate_range(any_section(parts)); break;
    case 9: duplicate_checkpoint(parts); break;
    case 10: lose_checkpoint(parts); break;
    case 11:
    case 12: overwrite(any_section(parts)); break;
    case 13:
    case 14: lead_astray(parts); break;
    default: change_header(parts);
  }
}

// The checkpoint stays in its place in the row, and its word tells the truth.
void RandomDamage::cut_payload(TraceParts& parts) {
  const auto frames = parts.frames();
  if (frames.empty()) return;
  const Frame& frame = frames[random_.below(frames.size())];
  if (frame.size == 0) return;
  const std::size_t kept = random_.below(frame.size);
  set_word(parts, frame, frame.type, frame.flags, kept);
  parts.data.erase(frame.payload() + kept, frame.size - kept);
}

void RandomDamage::change_word(TraceParts& parts) {
  const auto frames = parts.frames();
  if (frames.empty()) return;
  const Frame& frame = frames[random_.below(frames.size())];
  const std::size_t number = random_.bits();
  switch (random_.below(6)) {
    case 0: set_word(parts, frame, number & 31U, frame.flags, frame.size); break;
    case 1: set_word(parts, frame, frame.type, number & 7U, frame.size); break;
    case 2: set_word(parts, frame, frame.type, frame.flags, frame.size + number % 9); break;
    case 3: set_word(parts, frame, frame.type, frame.flags, number % (frame.size + 1)); break;
    case 4: set_word(parts, frame, frame.type, frame.flags, largest_payload); break;
    default: set_word(parts, frame, number & 31U, (number >> 5U) & 7U, (number >> 8U) % 4096);
  }
}

void RandomDamage::flip_bits(std::string& section) {
  if (section.empty()) return;
  for (std::size_t left = 1 + random_.below(6); left != 0; --left) {
    char& byte = section[random_.below(section.size())];
    byte = static_cast<char>(static_cast<unsigned char>(byte) ^ (1U << random_.below(8)));
  }
}

void RandomDamage::cut_end(std::string& section) {
  const std::size_t most =
      random_.one_in(3) ? section.size() : std::min<std::size_t>(section.size(), 64);
  section.resize(section.size() - random_.below(most + 1));
}

// Put in right behind itself, or anywhere else.
void RandomDamage::duplicate_range(std::string& section) {
  if (section.empty()) return;
  const std::size_t from = random_.below(section.size());
  const std::string range = section.substr(from, 1 + random_.below(48));
  const std::size_t to =
      random_.one_in(2) ? from + range.size() : random_.below(section.size() + 1);
  section.insert(to, range);
}

void RandomDamage::duplicate_checkpoint(TraceParts& parts) {
  const auto frames = parts.frames();
  if (frames.empty()) return;
  const Frame& frame = frames[random_.below(frames.size())];
  const Frame& place = frames[random_.below(frames.size())];
  const std::string bytes = parts.data.substr(frame.offset, frame.end() - frame.offset);
  parts.data.insert(place.offset, bytes);
}

void RandomDamage::lose_checkpoint(TraceParts& parts) {
  const auto frames = parts.frames();
  if (frames.empty()) return;
  const Frame& frame = frames[random_.below(frames.size())];
  parts.data.erase(frame.offset, frame.end() - frame.offset);
}

void RandomDamage::overwrite(std::string& section) {
  if (section.empty()) return;
  const std::size_t from = random_.below(section.size());
  const std::size_t count = std::min(section.size() - from, 1 + random_.below(12));
  const std::size_t kind = random_.below(4);
  for (std::size_t i = from; i != from + count; ++i) {
    constexpr std::array fills = {'\0', '\xFF', '\x7F'};
    section[i] = kind < fills.size() ? fills[kind] : static_cast<char>(random_.below(256));
  }
}

// Eight bytes that may be a reference become another address of one of the sections.
void RandomDamage::lead_astray(TraceParts& parts) {
  const auto frames = parts.frames();
  std::size_t at = 0;
  if (!frames.empty() && !random_.one_in(4)) {
    const Frame& frame = frames[random_.below(frames.size())];
    constexpr std::array<std::size_t, 4> common = {0, 12, 20, 32};
    at = frame.payload() + common[random_.below(common.size())];
  } else {
    at = random_.below(parts.data.size() + 1);
  }
  if (at > parts.data.size() || parts.data.size() - at < 8) return;
  const bool to_data = random_.one_in(2);
  const auto origin = std::string_view(parts.header).substr(origins_at + (to_data ? 0 : 8));
  const std::size_t size = to_data ? parts.data.size() : parts.add_data.size();
  const Ref reference = number_at(origin, 8, ByteOrder::big) + random_.below(size + 4) - 1;
  parts.data.replace(at, 8, Fields().u64(reference).encode(parts.order()));
}

void RandomDamage::change_header(TraceParts& parts) {
  const auto byte = static_cast<char>(random_.bits());
  switch (random_.below(3)) {
    // Any byte of the numbers that nothing depends on, of the origins, of the flags.
    case 0: parts.header[4 + random_.below(8)] = byte; break;
    case 1: parts.header[origins_at + random_.below(16)] = byte; break;
    default: parts.header[flags_at] = byte;
  }
}

std::string RandomDamage::outside(std::string file) {
  if (file.empty()) return file;
  switch (random_.below(5)) {
    case 0: file.resize(random_.below(file.size())); break;
    case 1: file += random_.bytes(3); break;
    case 2: file.resize(random_.below(std::min<std::size_t>(file.size(), 40))); break;
    default:
      file[random_.below(std::min<std::size_t>(file.size(), 20))] =
          static_cast<char>(random_.below(256));
  }
  return file;
}

}  // namespace CT::Test
