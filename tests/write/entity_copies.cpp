// SPDX-License-Identifier: MIT
#include "entity_copies.h"

#include <algorithm>
#include <span>

#include "codetrace/model/ct_format.h"

namespace CT::Test {

template <class Copy>
Write::Reference EntityCopies::copy(std::uint64_t reference, Kind kind, const Copy& copy) {
  const auto [at, is_new] = places_.try_emplace({reference - file_.add_data().origin(), kind}, 0);
  if (is_new) at->second = copy();
  return at->second;
}

const unsigned char* EntityCopies::descriptor(std::uint64_t reference, std::uint64_t size,
                                              std::uint64_t user_size) const {
  const unsigned char* const place = file_.add_data().resolve(reference);
  if (place == nullptr) return nullptr;
  return file_.add_data().resolve(reference, *place == Format::user_defined ? user_size : size);
}

// Texts of a trace that is laid down as it was are each as they were, even if they are alike.
Write::Reference EntityCopies::new_text(const unsigned char* place) {
  const std::string_view text = file_.add_data().text(place);
  return laid_down_ ? writer_.new_text(text) : writer_.text(text);
}

Write::Reference EntityCopies::text(std::uint64_t reference) {
  const unsigned char* const place = file_.add_data().resolve(reference);
  if (place == nullptr) return 0;
  return copy(reference, Kind::text, [&] { return new_text(place); });
}

Write::Reference EntityCopies::function(std::uint64_t reference) {
  namespace F = Format::Function;
  const unsigned char* const place = descriptor(reference, F::size, F::user_size);
  if (place == nullptr) return 0;
  return copy(reference, Kind::function, [&] {
    Write::FunctionInfo info;
    info.type = *place;
    info.name = text(cursor(place + F::name).u64());
    info.class_entry = class_entry(cursor(place + F::class_entry).u64());
    info.flags = cursor(place + F::flags).u32();
    if (info.type == Format::user_defined) {
      info.file = text(cursor(place + F::filename).u64());
      info.line = cursor(place + F::line).u32();
    }
    return writer_.new_function(info);
  });
}

Write::Reference EntityCopies::class_entry(std::uint64_t reference) {
  namespace C = Format::Class;
  const unsigned char* const place = descriptor(reference, C::size, C::user_size);
  if (place == nullptr) return 0;
  return copy(reference, Kind::class_entry, [&] {
    Write::ClassInfo info;
    info.type = *place;
    info.name = text(cursor(place + C::name).u64());
    info.flags = cursor(place + C::flags).u32();
    if (info.type == Format::user_defined) {
      info.file = text(cursor(place + C::filename).u64());
      info.line = cursor(place + C::line).u32();
    }
    return writer_.new_class_entry(info);
  });
}

// With what nothing refers to; the writer aligns descriptors itself.
void EntityCopies::fill_up(std::uint64_t place) {
  const std::uint64_t size = writer_.add_data_size();
  if (size >= place) return;
  const std::span<const unsigned char> gap(file_.add_data().data() + size, place - size);
  const bool is_alignment =
      gap.size() < 8 && place % 8 == 0 && std::count(gap.begin(), gap.end(), 0) == std::ssize(gap);
  if (!is_alignment) writer_.raw_add_data(gap);
}

void EntityCopies::lay_down(const Places& places) {
  laid_down_ = true;
  const std::uint64_t origin = file_.add_data().origin();
  for (const auto& [place, unused] : places) {
    const std::uint64_t reference = origin + place.first;
    fill_up(place.first);
    switch (place.second) {
      case Kind::text: text(reference); break;
      case Kind::function: function(reference); break;
      case Kind::class_entry: class_entry(reference); break;
    }
  }
}

}  // namespace CT::Test
