// SPDX-License-Identifier: MIT
//
// Functions and classes: descriptors that the tracer wrote once into ADD DATA and that every call
// and object refers to. Each is decoded once, numbered in order of first sighting and never changed
// again; the numbers are what the JSON document links by.
//
// `Entities` owns them. Its readers borrow: a pointer to a function or class lives as long as its
// table, which a CT::Storage, a kept record or a KVal keeps alive. Texts are found when asked for,
// so that overlapping names cost what is printed of them and no more. A descriptor counts as found
// only when the bytes that its type needs are inside ADD DATA.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>

#include "codetrace/model/ct_place_index.h"
#include "codetrace/model/ct_string.h"
#include "codetrace/model/ct_view.h"
#include "kcommon/k_export.h"

class QJsonObject;

namespace CT {

// The raw records in ADD DATA, known only by address.
struct Function;
struct ClassEntry;

// The descriptor that a reference means; null for 0 and where it is not whole.
CODETRACE_EXPORT const Function* resolve_function(const File& file, std::uint64_t reference);
CODETRACE_EXPORT const ClassEntry* resolve_class(const File& file, std::uint64_t reference);

namespace Checkpoint {

// The type of functions and classes that are defined in a script; any other is the engine's own.
inline constexpr std::uint8_t user_defined = Format::user_defined;

class CODETRACE_EXPORT ClassEntry {
 public:
  // Decodes the record. `id` is its number in its table, or -1 where nothing is numbered.
  // Requires: a record from resolve_class for this file.
  ClassEntry(const File& file, const CT::ClassEntry* record, std::int32_t id);

  [[nodiscard]] std::int32_t id() const { return id_; }
  [[nodiscard]] const CT::ClassEntry* record() const { return record_; }
  [[nodiscard]] std::uint8_t type() const { return type_; }
  [[nodiscard]] String name() const { return section_str(*file_, name_); }
  // Where the name and the file's name begin in ADD DATA, not measured; null for none.
  [[nodiscard]] const unsigned char* name_place() const { return name_; }
  [[nodiscard]] const unsigned char* filename_place() const { return filename_; }
  [[nodiscard]] std::uint32_t flags() const { return flags_; }
  [[nodiscard]] bool is_user() const { return type_ == user_defined; }
  // Of user classes only; for others absent, with length -1, and 0.
  [[nodiscard]] String filename() const;
  [[nodiscard]] std::uint32_t line() const { return line_; }

  [[nodiscard]] QJsonObject as_json() const;

 private:
  const File* file_;
  const CT::ClassEntry* record_;
  const unsigned char* name_;
  const unsigned char* filename_ = nullptr;
  std::int32_t id_;
  std::uint32_t flags_;
  std::uint32_t line_ = 0;
  std::uint8_t type_;
};

class CODETRACE_EXPORT Function {
 public:
  // As ClassEntry, in the class that is given; null for a plain function. Requires: a descriptor
  // from resolve_function for this file.
  Function(const File& file, const CT::Function* descriptor, const ClassEntry* class_entry,
           std::int32_t index);

  [[nodiscard]] std::int32_t index() const { return index_; }
  // Kept: always null; the checkpoint dump shows it so.
  [[nodiscard]] const CT::Function* record() const { return nullptr; }
  // The first eight bytes as stored; the first of them is the function's type.
  [[nodiscard]] std::uint64_t type() const { return type_; }
  [[nodiscard]] std::uint8_t type_byte() const;
  [[nodiscard]] bool is_user() const { return type_byte() == user_defined; }
  [[nodiscard]] String name() const { return section_str(*file_, name_); }
  // Where the name and the file's name begin in ADD DATA, not measured; null for none.
  [[nodiscard]] const unsigned char* name_place() const { return name_; }
  [[nodiscard]] const unsigned char* filename_place() const { return filename_; }
  // "Class::name", or the name alone for a plain function.
  [[nodiscard]] QString full_name() const;
  // Null for a plain function.
  [[nodiscard]] const ClassEntry* class_entry() const { return class_entry_; }
  [[nodiscard]] std::uint32_t flags() const { return flags_; }
  // Of user functions only; absent and 0 for others.
  [[nodiscard]] String filename() const { return section_str(*file_, filename_); }
  [[nodiscard]] std::uint32_t line_no() const { return line_no_; }
  [[nodiscard]] bool is_constructor_or_destructor() const { return is_constructor_or_destructor_; }

  [[nodiscard]] QJsonObject as_json() const;

 private:
  const File* file_;
  const unsigned char* name_;
  const unsigned char* filename_ = nullptr;
  const ClassEntry* class_entry_;
  std::uint64_t type_ = 0;
  std::int32_t index_;
  std::uint32_t flags_;
  std::uint32_t line_no_ = 0;
  bool is_constructor_or_destructor_;
};

}  // namespace Checkpoint

// The functions and classes of one file. Adding takes the one who reads the file; the const
// operations may be used from several threads at once as long as nobody adds.
class CODETRACE_EXPORT Entities : public std::enable_shared_from_this<Entities> {
 public:
  // Whether entries get their numbers or all -1, as those of a record that belongs to no storage.
  enum class Numbering : bool { none, by_sighting };

  // Borrows: the file.
  static std::shared_ptr<Entities> make(const File& file,
                                        Numbering numbering = Numbering::by_sighting) {
    return std::shared_ptr<Entities>(new Entities(file, numbering));
  }
  Entities(const Entities&) = delete;
  Entities& operator=(const Entities&) = delete;

  // The entry of a descriptor, decoded at its first sighting. If memory ends they throw
  // std::bad_alloc, and then the entry is not there. Requires: what resolve_class or
  // resolve_function gave for this file.
  const Checkpoint::ClassEntry& add(const ClassEntry* record);
  const Checkpoint::Function& add(const Function* descriptor);

  // The same without adding: null for a descriptor that was never seen, and for null.
  [[nodiscard]] const Checkpoint::ClassEntry* find(const ClassEntry* record) const;
  [[nodiscard]] const Checkpoint::Function* find(const Function* descriptor) const;

  // The same by the reference that a record has: null where it leads to no whole descriptor.
  const Checkpoint::ClassEntry* add_class(std::uint64_t reference) {
    const Checkpoint::ClassEntry* known = find_class(reference);
    return known != nullptr ? known : add_new_class(reference);
  }
  const Checkpoint::Function* add_function(std::uint64_t reference) {
    const Checkpoint::Function* known = find_function(reference);
    return known != nullptr ? known : add_new_function(reference);
  }
  [[nodiscard]] const Checkpoint::ClassEntry* find_class(std::uint64_t reference) const {
    return known_at(reference, class_index_);
  }
  [[nodiscard]] const Checkpoint::Function* find_function(std::uint64_t reference) const {
    return known_at(reference, function_index_);
  }

  // In order of first sighting: an entry's number is its place here.
  [[nodiscard]] const std::deque<Checkpoint::ClassEntry>& classes() const { return classes_; }
  [[nodiscard]] const std::deque<Checkpoint::Function>& functions() const { return functions_; }
  [[nodiscard]] const File& file() const { return *file_; }

 private:
  Entities(const File& file, Numbering numbering) : file_(&file), numbering_(numbering) {}
  const Checkpoint::ClassEntry* add_new_class(std::uint64_t reference);
  const Checkpoint::Function* add_new_function(std::uint64_t reference);
  // A place that has an entry is that of a whole descriptor.
  template <class Entry>
  const Entry* known_at(std::uint64_t reference, const PlaceIndex<Entry>& index) const {
    const Section& names = file_->add_data();
    const unsigned char* place = names.resolve(reference);
    if (place == nullptr) return nullptr;
    return index.find(static_cast<std::uint32_t>(place - names.data()));
  }
  [[nodiscard]] std::int32_t number(std::size_t place) const {
    return numbering_ == Numbering::by_sighting ? static_cast<std::int32_t>(place) : -1;
  }

  const File* file_;
  Numbering numbering_;
  std::deque<Checkpoint::ClassEntry> classes_;
  PlaceIndex<Checkpoint::ClassEntry> class_index_;
  std::deque<Checkpoint::Function> functions_;
  PlaceIndex<Checkpoint::Function> function_index_;
};

}  // namespace CT
