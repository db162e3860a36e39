// SPDX-License-Identifier: MIT
#include "ctredact/ct_callee.h"

#include <algorithm>

#include "codetrace/model/ct_format.h"

namespace CT::Redact {

namespace {

// Over so many bytes of a descriptor; failed if they are not there.
Cursor descriptor(const File& file, std::uint64_t reference, std::uint64_t size) {
  const unsigned char* const place = file.add_data().resolve(reference, size);
  if (place == nullptr) return {};
  return {place, place + size, file.big_endian()};
}

// Its type, and a cursor behind the bytes that say no more.
Cursor begun(const File& file, std::uint64_t reference, std::uint64_t size, std::uint64_t user_size,
             std::uint8_t& type) {
  const unsigned char* const place = file.add_data().resolve(reference, size);
  if (place == nullptr) return {};
  type = *place;
  Cursor cursor = descriptor(file, reference, type == Format::user_defined ? user_size : size);
  cursor.bytes(8);
  return cursor;
}

// A name that is too long is none that a rule knows.
std::string_view short_text(const File& file, std::uint64_t reference) {
  constexpr std::size_t longest = 256;
  const Section& section = file.add_data();
  const unsigned char* const place = section.resolve(reference);
  if (place == nullptr) return {};
  const std::string_view room(Section::as_chars(place),
                              static_cast<std::size_t>(section.end() - place));
  const std::string_view head = room.substr(0, longest);
  return head.substr(0, std::min(head.find('\0'), head.size()));
}

}  // namespace

bool read_class(const File& file, std::uint64_t reference, ClassParts& parts) {
  Cursor cursor = begun(file, reference, Format::Class::size, Format::Class::user_size, parts.type);
  parts.name = cursor.u64();
  parts.flags = cursor.u32();
  if (!cursor.ok()) return false;
  if (parts.type != Format::user_defined) return true;
  cursor.bytes(4);
  parts.file = cursor.u64();
  parts.line = cursor.u32();
  return true;
}

bool Callees::read(std::uint64_t reference, Callee& callee) const {
  Cursor cursor =
      begun(file_, reference, Format::Function::size, Format::Function::user_size, callee.type);
  callee.name = cursor.u64();
  callee.class_entry = cursor.u64();
  callee.flags = cursor.u32();
  if (!cursor.ok()) return false;
  if (callee.type != Format::user_defined) return true;
  cursor.bytes(4);
  callee.file = cursor.u64();
  callee.line = cursor.u32();
  return true;
}

std::string Callees::full_name(const Callee& callee) const {
  std::string name;
  ClassParts parts;
  if (read_class(file_, callee.class_entry, parts)) {
    name += short_text(file_, parts.name);
    name += "::";
  }
  name += short_text(file_, callee.name);
  return name;
}

const Callee* Callees::find(std::uint64_t reference) {
  constexpr std::uint64_t factor = 0x9E3779B97F4A7C15;
  Recent& recent = recent_[(reference * factor) >> (64 - recent_bits)];
  if (recent.callee != nullptr && recent.reference == reference) return recent.callee;
  auto known = known_.find(reference);
  if (known == known_.end()) {
    auto callee = std::make_unique<Callee>();
    if (!read(reference, *callee)) return nullptr;
    callee->rules = rules_.calls(full_name(*callee), callee->type == Format::user_defined);
    callee->number = static_cast<std::uint32_t>(known_.size());
    known = known_.emplace(reference, std::move(callee)).first;
  }
  recent = {reference, known->second.get()};
  return recent.callee;
}

}  // namespace CT::Redact
