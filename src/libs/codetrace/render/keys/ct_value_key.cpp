// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_value_key.h"

#include <algorithm>
#include <cstring>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_text.h"

namespace CT::Checkpoint {

namespace {

// Names up to here are copied.
constexpr std::size_t short_name = 64;

bool is_short(const File& file, const unsigned char* place) {
  const auto room = static_cast<std::size_t>(file.add_data().end() - place);
  return std::memchr(place, 0, std::min(room, short_name)) != nullptr || room <= short_name;
}

}  // namespace

void KeyTexts::NameNoter::write_name(const File& file, const unsigned char* place, Writer& out) {
  if (place == nullptr || is_short(file, place)) {
    ValueTextWriter::write_name(file, place, out);
  } else {
    texts_.names_.push_back({static_cast<std::uint32_t>(texts_.bytes_.size()), place});
  }
}

MapMember KeyTexts::add(const ValueTape& tape, ValueTape::Index key) {
  file_ = &tape.file();
  const Mark before = mark();
  noter_.write(ValueRef(tape, key), bytes_);
  MapMember member = {};
  member.begin = static_cast<std::uint32_t>(before.bytes);
  member.end = static_cast<std::uint32_t>(bytes_.size());
  member.first_name = static_cast<std::uint32_t>(before.names);
  const ValueTape::Index value = tape.end(key);
  member.value = value & 0x7FFFFFFF;
  member.is_undef = tape.type(value) == ValueType::undef ? 1 : 0;
  return member;
}

void KeyTexts::truncate(const Mark& mark) {
  bytes_.truncate(mark.bytes);
  names_.truncate(mark.names);
}

void KeyTexts::write(const MapMember& member, JsonWriter& out) const {
  out.begin_key();
  std::size_t at = member.begin;
  for (std::size_t i = member.first_name; const Name* found = name(member, i); ++i) {
    if (!out.ok()) return;
    put_json_text(out.out(), bytes().substr(at, found->at - at));
    put_json_text(out.out(), add_data().text(found->place));
    at = found->at;
  }
  put_json_text(out.out(), bytes().substr(at, member.end - at));
  out.end_key();
}

}  // namespace CT::Checkpoint
