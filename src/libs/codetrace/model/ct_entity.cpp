// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_entity.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>

#include "codetrace/bytes/ct_utf8.h"

namespace CT {

namespace {

template <class Raw>
const unsigned char* bytes_of(const Raw* raw) {
  return static_cast<const unsigned char*>(static_cast<const void*>(raw));
}

template <class Raw>
const Raw* resolve_descriptor(const File& file, std::uint64_t reference, std::uint64_t size,
                              std::uint64_t user_size) {
  const unsigned char* place = file.add_data().resolve(reference, size);
  if (place == nullptr) return nullptr;
  if (*place == Format::user_defined) place = file.add_data().resolve(reference, user_size);
  return static_cast<const Raw*>(static_cast<const void*>(place));
}

// A descriptor: fields at fixed offsets from its start.
class Descriptor {
 public:
  template <class Raw>
  Descriptor(const File& file, const Raw* raw)
      : file_(file), start_(bytes_of(raw)), end_(file.add_data().end()) {}

  [[nodiscard]] std::uint64_t u64(std::size_t offset) const { return at(offset).u64(); }
  [[nodiscard]] std::uint32_t u32(std::size_t offset) const { return at(offset).u32(); }
  [[nodiscard]] const unsigned char* text(std::size_t offset) const {
    return file_.add_data().resolve(u64(offset));
  }

 private:
  [[nodiscard]] Cursor at(std::size_t offset) const {
    Cursor cursor(start_, end_, file_.big_endian());
    cursor.bytes(offset);
    return cursor;
  }

  const File& file_;
  const unsigned char* start_;
  const unsigned char* end_;
};

// Whether the text at `place` decodes to `expected`; looks at no more bytes than that needs.
bool text_is(const File& file, const unsigned char* place, std::string_view expected) {
  if (place == nullptr) return false;
  const auto room = static_cast<std::size_t>(file.add_data().end() - place);
  const std::string_view head(Section::as_chars(place),
                              std::min(room, expected.size() + byte_order_mark.size() + 1));
  return decodes_to(head.substr(0, head.find('\0')), expected);
}

}  // namespace

const Function* resolve_function(const File& file, std::uint64_t reference) {
  return resolve_descriptor<Function>(file, reference, Format::Function::size,
                                      Format::Function::user_size);
}

const ClassEntry* resolve_class(const File& file, std::uint64_t reference) {
  return resolve_descriptor<ClassEntry>(file, reference, Format::Class::size,
                                        Format::Class::user_size);
}

namespace Checkpoint {

ClassEntry::ClassEntry(const File& file, const CT::ClassEntry* record, std::int32_t id)
    : file_(&file),
      record_(record),
      name_(Descriptor(file, record).text(Format::Class::name)),
      id_(id),
      flags_(Descriptor(file, record).u32(Format::Class::flags)),
      type_(*bytes_of(record)) {
  if (!is_user()) return;
  filename_ = Descriptor(file, record).text(Format::Class::filename);
  line_ = Descriptor(file, record).u32(Format::Class::line);
}

String ClassEntry::filename() const {
  if (!is_user()) return {nullptr, static_cast<std::uint32_t>(-1), String::uncuttable};
  return section_str(*file_, filename_);
}

Function::Function(const File& file, const CT::Function* descriptor, const ClassEntry* class_entry,
                   std::int32_t index)
    : file_(&file),
      name_(Descriptor(file, descriptor).text(Format::Function::name)),
      class_entry_(class_entry),
      index_(index),
      flags_(Descriptor(file, descriptor).u32(Format::Function::flags)),
      is_constructor_or_destructor_(text_is(file, name_, "__construct") ||
                                    text_is(file, name_, "__destruct")) {
  std::memcpy(&type_, bytes_of(descriptor), sizeof type_);
  if (!is_user()) return;
  filename_ = Descriptor(file, descriptor).text(Format::Function::filename);
  line_no_ = Descriptor(file, descriptor).u32(Format::Function::line);
}

std::uint8_t Function::type_byte() const {
  std::uint8_t first = 0;
  std::memcpy(&first, &type_, sizeof first);
  return first;
}

}  // namespace Checkpoint

namespace {

template <class Raw>
std::uint32_t place_of(const File& file, const Raw* raw) {
  assert(file.add_data().contains(bytes_of(raw)));
  return static_cast<std::uint32_t>(bytes_of(raw) - file.add_data().data());
}

}  // namespace

// The index learns of an entry last, when nothing can fail any more.
const Checkpoint::ClassEntry& Entities::add(const ClassEntry* record) {
  if (const Checkpoint::ClassEntry* known = find(record); known != nullptr) return *known;
  class_index_.reserve_one();
  classes_.emplace_back(*file_, record, number(classes_.size()));
  class_index_.insert(place_of(*file_, record), classes_.back());
  return classes_.back();
}

// Its class may be new too. The function is put down first, so that neither of both is there if
// memory ends.
const Checkpoint::Function& Entities::add(const Function* descriptor) {
  if (const Checkpoint::Function* known = find(descriptor); known != nullptr) return *known;
  const std::uint64_t reference = Descriptor(*file_, descriptor).u64(Format::Function::class_entry);
  const std::int32_t index = number(functions_.size());
  function_index_.reserve_one();
  functions_.emplace_back(*file_, descriptor, nullptr, index);
  try {
    functions_.back() = Checkpoint::Function(*file_, descriptor, add_class(reference), index);
  } catch (const std::bad_alloc&) {
    functions_.pop_back();
    throw;
  }
  function_index_.insert(place_of(*file_, descriptor), functions_.back());
  return functions_.back();
}

const Checkpoint::ClassEntry* Entities::add_new_class(std::uint64_t reference) {
  const ClassEntry* record = resolve_class(*file_, reference);
  return record != nullptr ? &add(record) : nullptr;
}

const Checkpoint::Function* Entities::add_new_function(std::uint64_t reference) {
  const Function* descriptor = resolve_function(*file_, reference);
  return descriptor != nullptr ? &add(descriptor) : nullptr;
}

const Checkpoint::ClassEntry* Entities::find(const ClassEntry* record) const {
  return record != nullptr ? class_index_.find(place_of(*file_, record)) : nullptr;
}

const Checkpoint::Function* Entities::find(const Function* descriptor) const {
  return descriptor != nullptr ? function_index_.find(place_of(*file_, descriptor)) : nullptr;
}

}  // namespace CT
