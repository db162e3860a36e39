// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_names.h"

#include <algorithm>

namespace CT::Salvage {

namespace {

constexpr std::size_t alignment = 8;

struct Shape {
  std::uint64_t size;
  std::uint64_t user_size;
  std::size_t filename;
  std::size_t flags;
};

Shape shape_of(Refers kind) {
  namespace F = Format::Function;
  namespace C = Format::Class;
  return kind == Refers::function ? Shape{F::size, F::user_size, F::filename, F::flags}
                                  : Shape{C::size, C::user_size, C::filename, C::flags};
}

bool is_zero(const unsigned char* at, std::uint64_t size) {
  return std::all_of(at, at + size, [](unsigned char byte) { return byte == 0; });
}

// So many bytes that are no UTF-8, with control characters among them, are no text.
bool is_garbage(std::string_view text) {
  bool has_control = false;
  bool has_wrong_bytes = false;
  int wanted = 0;  // continuations
  for (const char each : text) {
    const auto byte = static_cast<unsigned char>(each);
    const bool continues = (byte & 0xC0U) == 0x80;
    if (continues != (wanted != 0)) has_wrong_bytes = true;
    if (byte < 0x20 || byte == 0x7F) has_control = true;
    if (continues) {
      wanted = wanted != 0 ? wanted - 1 : 0;
    } else {
      wanted = byte < 0xC0 ? 0 : byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
    }
  }
  return has_control && has_wrong_bytes;
}

}  // namespace

bool Names::check(Refers kind, std::uint64_t reference) {
  Known& slot = known_[(reference >> 2 ^ static_cast<std::uint64_t>(kind)) % known_.size()];
  if (slot.kind == kind && slot.reference == reference) return true;
  if (!look(kind, reference)) return false;
  slot = {reference, kind};
  return true;
}

bool Names::look(Refers kind, std::uint64_t reference) {
  if (reference == 0 && kind != Refers::function) return true;
  const bool is_good = kind == Refers::text ? look_at_text(reference)
                                            : look_at_descriptor(describe(kind, reference));
  if (!is_good) remember(kind, reference);
  return is_good;
}

// An empty text between zeros is a hole; so few bytes are looked at that texts in each other cost
// no more.
bool Names::look_at_text(std::uint64_t reference) const {
  constexpr std::uint64_t hole = 16;
  constexpr std::size_t enough = 64;
  const unsigned char* const place = section_.resolve(reference);
  if (place == nullptr) return false;
  const auto room = static_cast<std::uint64_t>(section_.end() - place);
  if (*place == 0) return room < hole || !is_zero(place, hole);
  const std::string_view start(Section::as_chars(place), std::min<std::uint64_t>(room, enough));
  return !is_garbage(start.substr(0, start.find('\0')));
}

// All that it refers to is looked at, for what is lost of it.
bool Names::look_at_descriptor(const Descriptor& found) {
  if (!found.is_there) return false;
  const bool has_name = check(Refers::text, found.name);
  const bool has_class = check(Refers::class_entry, found.class_entry);
  const bool has_file = check(Refers::text, found.filename);
  return has_name && has_class && has_file;
}

// One whose name lies nowhere is none.
Names::Descriptor Names::describe(Refers kind, std::uint64_t reference) const {
  static_assert(Format::Function::name == Format::Class::name);
  const Shape shape = shape_of(kind);
  Descriptor found;
  const unsigned char* const place =
      reference != 0 ? section_.resolve(reference, shape.size) : nullptr;
  if (place == nullptr) return found;
  found.is_user = *place == Format::user_defined;
  if (found.is_user && section_.resolve(reference, shape.user_size) == nullptr) return found;
  found.name = order_.u64(place + Format::Function::name);
  found.is_there =
      found.name != 0 ? section_.resolve(found.name) != nullptr : !is_zero(place, shape.size);
  found.flags = order_.u32(place + shape.flags);
  if (kind == Refers::function) {
    found.class_entry = order_.u64(place + Format::Function::class_entry);
  }
  if (found.is_user) {
    found.filename = order_.u64(place + shape.filename);
    found.line = order_.u32(place + shape.filename + Format::reference_size);
  }
  return found;
}

void Names::remember(Refers kind, std::uint64_t reference) {
  constexpr std::size_t few = 4096;
  lost_.push_back({reference, kind, 0});
  if (lost_.size() > 2 * united_ + few) unite();
}

void Names::unite() {
  const auto is_before = [](const Lost& a, const Lost& b) { return a.is_before(b); };
  const auto is_same = [](const Lost& a, const Lost& b) {
    return a.reference == b.reference && a.kind == b.kind;
  };
  std::sort(lost_.begin(), lost_.end(), is_before);
  lost_.erase(std::unique(lost_.begin(), lost_.end(), is_same), lost_.end());
  united_ = lost_.size();
}

// Classes have names, and functions have both.
void Names::invent() {
  unite();
  for (const Refers kind : {Refers::text, Refers::class_entry, Refers::function}) {
    for (Lost& lost : lost_) {
      if (lost.kind == kind) replace(lost);
    }
  }
}

std::string Names::next_name(Refers kind) {
  ++counts_[static_cast<std::size_t>(kind)];
  return "unknown#" + std::to_string(++names_);
}

void Names::replace(Lost& lost) {
  if (lost.kind == Refers::text) {
    lost.now = add_text(next_name(lost.kind));
    return;
  }
  Descriptor wanted = describe(lost.kind, lost.reference);
  if (wanted.is_there) {
    wanted.name = now(Refers::text, wanted.name);
    wanted.class_entry = now(Refers::class_entry, wanted.class_entry);
    wanted.filename = now(Refers::text, wanted.filename);
  } else {
    wanted = Descriptor();
    wanted.name = add_text(next_name(lost.kind));
  }
  lost.now = add(lost.kind, wanted);
}

std::uint64_t Names::now(Refers kind, std::uint64_t reference) const {
  const Lost wanted = {reference, kind, 0};
  const auto found = std::lower_bound(lost_.begin(), lost_.end(), wanted,
                                      [](const Lost& a, const Lost& b) { return a.is_before(b); });
  const bool is_lost = found != lost_.end() && found->reference == reference && found->kind == kind;
  return is_lost ? found->now : reference;
}

std::uint64_t Names::add_text(std::string_view text) {
  end_last_text();
  if (address() == 0) appended_.push_back(0);
  const std::uint64_t reference = address();
  appended_.insert(appended_.end(), text.begin(), text.end());
  appended_.push_back(0);
  return reference;
}

// The last text of a section that was cut off is not to go on in what is appended.
void Names::end_last_text() {
  const bool is_cut = section_.size() != 0 && *(section_.end() - 1) != 0;
  if (appended_.empty() && is_cut) appended_.push_back(0);
}

std::uint64_t Names::add_function(std::string_view name) {
  Descriptor wanted;
  wanted.name = add_text(name);
  return add(Refers::function, wanted);
}

std::uint64_t Names::add(Refers kind, const Descriptor& wanted) {
  constexpr std::uint8_t built_in = 1;
  align();
  const std::uint64_t reference = address();
  appended_.push_back(wanted.is_user ? Format::user_defined : built_in);
  appended_.insert(appended_.end(), Format::reference_size - 1, 0);
  put(wanted.name);
  if (kind == Refers::function) put(wanted.class_entry);
  put(wanted.flags);
  put(std::uint32_t{0});
  if (wanted.is_user) {
    put(wanted.filename);
    put(wanted.line);
  }
  return reference;
}

void Names::align() {
  end_last_text();
  while ((section_.size() + appended_.size()) % alignment != 0 || address() == 0) {
    appended_.push_back(0);
  }
}

void Names::put(std::uint64_t value) {
  appended_.resize(appended_.size() + sizeof value);
  order_.put(appended_.data() + appended_.size() - sizeof value, value);
}

void Names::put(std::uint32_t value) {
  appended_.resize(appended_.size() + sizeof value);
  order_.put(appended_.data() + appended_.size() - sizeof value, value);
}

}  // namespace CT::Salvage
