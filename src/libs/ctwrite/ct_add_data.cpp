// SPDX-License-Identifier: MIT
#include "ctwrite/ct_add_data.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace CT::Write {

namespace {

const unsigned char* as_bytes(const char* text) {
  return static_cast<const unsigned char*>(static_cast<const void*>(text));
}

constexpr std::uint64_t aligned(std::uint64_t size, std::uint64_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

}  // namespace

std::optional<Reference> AddData::text(std::string_view text, Sharing sharing) noexcept {
  const std::size_t size = std::min(text.find('\0'), text.size());
  return item({Kind::text, as_bytes(text.data()), size}, sharing);
}

std::optional<Reference> AddData::function(const FunctionInfo& info, Sharing sharing) noexcept {
  namespace F = Format::Function;
  std::array<unsigned char, aligned(F::user_size, alignment)> bytes{};
  bytes[0] = info.type;
  encoding_.put(&bytes[F::name], info.name);
  encoding_.put(&bytes[F::class_entry], info.class_entry);
  encoding_.put(&bytes[F::flags], info.flags);
  encoding_.put(&bytes[F::filename], info.file);
  encoding_.put(&bytes[F::line], info.line);
  return item({Kind::function, bytes.data(), bytes.size()}, sharing);
}

std::optional<Reference> AddData::class_entry(const ClassInfo& info, Sharing sharing) noexcept {
  namespace C = Format::Class;
  std::array<unsigned char, aligned(C::user_size, alignment)> bytes{};
  bytes[0] = info.type;
  encoding_.put(&bytes[C::name], info.name);
  encoding_.put(&bytes[C::flags], info.flags);
  encoding_.put(&bytes[C::filename], info.file);
  encoding_.put(&bytes[C::line], info.line);
  return item({Kind::class_entry, bytes.data(), bytes.size()}, sharing);
}

std::optional<Reference> AddData::raw(std::span<const unsigned char> bytes) noexcept {
  const std::uint64_t place = section_->size();
  Bytes& section = section_->bytes();
  if (bytes.size() > most_ - place) return fail(Error::section_too_large);
  if (!section.reserve(bytes.size())) return fail(Error::no_memory);
  if (!bytes.empty()) std::memcpy(section.data() + place, bytes.data(), bytes.size());
  section.resize(place + bytes.size());
  return origin_ + place;
}

std::optional<Reference> AddData::item(const Item& item, Sharing sharing) noexcept {
  const bool shared = sharing == Sharing::shared;
  const std::uint32_t hash = shared ? hash_of(item) : 0;
  if (shared) {
    const auto is_it = [&](std::uint32_t place) { return lies_at(place, item); };
    const std::uint32_t found = places_.find(hash, is_it);
    if (found != PlaceTable::none) return origin_ + found;
    if (!places_.reserve()) return fail(Error::no_memory);
  }
  const std::optional<std::uint32_t> place = append(item);
  if (!place) return std::nullopt;
  if (shared) places_.add(hash, *place);
  return origin_ + *place;
}

// The kind is part of it, so things of two kinds never meet.
std::uint32_t AddData::hash_of(const Item& item) const noexcept {
  constexpr std::uint32_t kind_shift = 30;
  const std::uint64_t hash = hash_(item.bytes, item.size);
  return static_cast<std::uint32_t>(hash) >> 2 | static_cast<std::uint32_t>(item.kind)
                                                     << kind_shift;
}

bool AddData::lies_at(std::uint32_t place, const Item& item) const noexcept {
  const Bytes& section = section_->bytes();
  const std::size_t nul = item.kind == Kind::text ? 1 : 0;
  if (section.size() - place < item.size + nul) return false;
  const unsigned char* const there = section.data() + place;
  if (item.size != 0 && std::memcmp(there, item.bytes, item.size) != 0) return false;
  return nul == 0 || there[item.size] == 0;
}

std::optional<std::uint32_t> AddData::append(const Item& item) noexcept {
  const std::uint64_t step = item.kind == Kind::text ? 1 : alignment;
  const std::uint64_t nul = item.kind == Kind::text ? 1 : 0;
  Bytes& section = section_->bytes();
  std::uint64_t place = aligned(section.size(), step);
  // Address 0 would mean none.
  if (origin_ + place == 0) place += step;
  const std::uint64_t end = place + item.size + nul;
  if (end > most_) return fail(Error::section_too_large);
  if (!section.reserve(end - section.size())) return fail(Error::no_memory);
  std::memset(section.data() + section.size(), 0, place - section.size());
  if (item.size != 0) std::memcpy(section.data() + place, item.bytes, item.size);
  if (nul != 0) section.data()[end - 1] = 0;
  section.resize(end);
  return static_cast<std::uint32_t>(place);
}

std::nullopt_t AddData::fail(Error error) noexcept {
  error_ = error;
  return std::nullopt;
}

}  // namespace CT::Write
