// SPDX-License-Identifier: MIT
//
// Functions and classes: descriptors that the tracer wrote once into ADD DATA and that every call
// and object refers to. Each is decoded once, numbered in order of first sighting and shared; the
// numbers are what the JSON document links by. `EntityCache` keeps them; CT::Storage is one.
//
// Texts are found when asked for, so that overlapping names cost what is printed of them and no
// more. A descriptor counts as found only when the bytes that its type needs are inside ADD DATA.
#pragma once

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

#include "codetrace/model/ct_place_index.h"
#include "codetrace/model/ct_string.h"
#include "codetrace/model/ct_view.h"
#include "codetrace/render/ct_json_members.h"
#include "kcommon/k_export.h"

namespace CT {

// The raw records in ADD DATA, known only by address.
struct Function;
struct ClassEntry;

class EntityCache;

// The descriptor that a reference means; null for 0 and where it is not whole.
CODETRACE_EXPORT const Function* resolve_function(const File& file, std::uint64_t reference);
CODETRACE_EXPORT const ClassEntry* resolve_class(const File& file, std::uint64_t reference);

namespace Checkpoint {

// The type of functions and classes that are defined in a script; any other is the engine's own.
constexpr std::uint8_t user_defined = 2;

class CODETRACE_EXPORT ClassEntry final : public JsonPart {
 public:
  // Decodes the record. `id` is its number in the cache, or -1 outside of one.
  // Requires: a record from resolve_class.
  ClassEntry(const CheckpointView& view, const CT::ClassEntry* record, EntityCache* cache, int id);

  [[nodiscard]] std::int32_t id() const { return id_; }
  [[nodiscard]] const CT::ClassEntry* record() const { return record_; }
  [[nodiscard]] std::uint8_t type() const { return type_; }
  [[nodiscard]] String name() const { return section_str(*file_, name_); }
  // Where the name begins in ADD DATA, not measured; null for none.
  [[nodiscard]] const unsigned char* name_place() const { return name_; }
  [[nodiscard]] std::uint32_t flags() const { return flags_; }
  // Of user classes only; absent and 0 for others.
  [[nodiscard]] String filename() const { return section_str(*file_, filename_); }
  [[nodiscard]] std::uint32_t line() const { return line_; }

  // Everything but type and flags.
  void collect(JsonMembers& members) const;
  void write_json(JsonWriter& out) const override;
  [[nodiscard]] QJsonValue to_qt_json() const override { return as_json(); }
  [[nodiscard]] QJsonObject as_json() const;

 private:
  const File* file_;
  const CT::ClassEntry* record_;
  const unsigned char* name_ = nullptr;
  const unsigned char* filename_ = nullptr;
  std::int32_t id_;
  std::uint32_t flags_ = 0;
  std::uint32_t line_ = 0;
  std::uint8_t type_ = 0;
};

class CODETRACE_EXPORT Function {
 public:
  // As ClassEntry; `index` is the number in the cache, or -1. The class is taken from the cache, or
  // decoded for this function alone without one. Requires: a descriptor from resolve_function.
  Function(const CheckpointView& view, const CT::Function* descriptor, EntityCache* cache,
           int index);

  [[nodiscard]] std::int32_t index() const { return index_; }
  // Kept: always null; the checkpoint dump shows it so.
  [[nodiscard]] const CT::Function* record() const { return nullptr; }
  // The first eight bytes as stored; the first of them is the function's type.
  [[nodiscard]] std::uint64_t type() const { return type_; }
  [[nodiscard]] std::uint8_t type_byte() const;
  [[nodiscard]] bool is_user() const { return type_byte() == user_defined; }
  [[nodiscard]] String name() const { return section_str(*file_, name_); }
  // "Class::name", or the name alone for a plain function.
  [[nodiscard]] QString full_name() const;
  // Null for a plain function.
  [[nodiscard]] const std::shared_ptr<ClassEntry>& class_entry() const { return class_entry_; }
  [[nodiscard]] std::uint32_t flags() const { return flags_; }
  // Of user functions only; absent and 0 for others.
  [[nodiscard]] String filename() const { return section_str(*file_, filename_); }
  [[nodiscard]] std::uint32_t line_no() const { return line_no_; }
  [[nodiscard]] bool is_constructor_or_destructor() const { return is_constructor_or_destructor_; }

  void collect(JsonMembers& members) const;
  [[nodiscard]] QJsonObject as_json() const;

 private:
  const File* file_;
  const unsigned char* name_ = nullptr;
  const unsigned char* filename_ = nullptr;
  std::shared_ptr<ClassEntry> class_entry_;
  std::uint64_t type_ = 0;
  std::int32_t index_;
  std::uint32_t flags_ = 0;
  std::uint32_t line_no_ = 0;
  bool is_constructor_or_destructor_ = false;
};

}  // namespace Checkpoint

// Requires: every view is of the same file.
class CODETRACE_EXPORT EntityCache {
 public:
  // The shared entry of a record, decoded and numbered at its first sighting.
  std::shared_ptr<Checkpoint::ClassEntry> get_class_entry(const CheckpointView& view,
                                                          const ClassEntry* record);
  std::shared_ptr<Checkpoint::Function> get_function(const CheckpointView& view,
                                                     const Function* descriptor);

  // In order of first sighting: an entry's number is its place here.
  [[nodiscard]] const std::vector<std::shared_ptr<Checkpoint::ClassEntry>>& class_entries() const {
    return class_entries_;
  }
  [[nodiscard]] const std::vector<std::shared_ptr<Checkpoint::Function>>& functions() const {
    return functions_;
  }

 private:
  std::vector<std::shared_ptr<Checkpoint::ClassEntry>> class_entries_;
  PlaceIndex class_index_;
  std::vector<std::shared_ptr<Checkpoint::Function>> functions_;
  PlaceIndex function_index_;
};

}  // namespace CT
