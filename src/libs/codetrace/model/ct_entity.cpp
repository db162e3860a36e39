// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_entity.h"

#include <algorithm>
#include <cstring>

#include "codetrace/render/ct_text.h"

namespace CT {

namespace {

// Sizes of the descriptors, without and with the fields that only user-defined ones have.
constexpr std::uint64_t function_size = 28;
constexpr std::uint64_t user_function_size = 44;
constexpr std::uint64_t class_size = 20;
constexpr std::uint64_t user_class_size = 36;

template <class Raw>
const unsigned char* bytes_of(const Raw* raw) {
  return static_cast<const unsigned char*>(static_cast<const void*>(raw));
}

template <class Raw>
const Raw* resolve_descriptor(const File& file, std::uint64_t reference, std::uint64_t size,
                              std::uint64_t user_size) {
  const unsigned char* place = file.add_data().resolve(reference, size);
  if (place == nullptr) return nullptr;
  if (*place == Checkpoint::user_defined) place = file.add_data().resolve(reference, user_size);
  return static_cast<const Raw*>(static_cast<const void*>(place));
}

template <class Raw>
std::uint32_t place_of(const CheckpointView& view, const Raw* raw) {
  return static_cast<std::uint32_t>(bytes_of(raw) - view.file().add_data().data());
}

// Fields of a descriptor at fixed offsets from its start.
class Fields {
 public:
  template <class Raw>
  Fields(const File& file, const Raw* raw)
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
  constexpr std::size_t byte_order_mark_size = 3;
  const auto room = static_cast<std::size_t>(file.add_data().end() - place);
  const std::string_view head(Section::as_chars(place),
                              std::min(room, expected.size() + byte_order_mark_size + 1));
  return decodes_to(head.substr(0, head.find('\0')), expected);
}

}  // namespace

const Function* resolve_function(const File& file, std::uint64_t reference) {
  return resolve_descriptor<Function>(file, reference, function_size, user_function_size);
}

const ClassEntry* resolve_class(const File& file, std::uint64_t reference) {
  return resolve_descriptor<ClassEntry>(file, reference, class_size, user_class_size);
}

namespace Checkpoint {

ClassEntry::ClassEntry(const CheckpointView& view, const CT::ClassEntry* record,
                       EntityCache* /*cache*/, int id)
    : file_(&view.file()), record_(record), id_(id), type_(*bytes_of(record)) {
  const Fields fields(*file_, record);
  name_ = fields.text(8);
  flags_ = fields.u32(16);
  if (type_ != user_defined) return;
  filename_ = fields.text(24);
  line_ = fields.u32(32);
}

void ClassEntry::collect(JsonMembers& members) const {
  members.string(Key::name, name());
  if (id_ >= 0) members.number(Key::id, id_);
  if (type_ != user_defined || !filename().is_present()) return;
  members.string(Key::filename, filename());
  members.number(Key::line_no, line_);
}

void ClassEntry::write_json(JsonWriter& out) const {
  JsonMembers members;
  collect(members);
  members.write(out);
}

QJsonObject ClassEntry::as_json() const {
  JsonMembers members;
  collect(members);
  return members.as_json();
}

Function::Function(const CheckpointView& view, const CT::Function* descriptor, EntityCache* cache,
                   int index)
    : file_(&view.file()), index_(index) {
  std::memcpy(&type_, bytes_of(descriptor), sizeof type_);
  const Fields fields(*file_, descriptor);
  name_ = fields.text(8);
  flags_ = fields.u32(24);
  is_constructor_or_destructor_ =
      text_is(*file_, name_, "__construct") || text_is(*file_, name_, "__destruct");
  if (const CT::ClassEntry* record = resolve_class(*file_, fields.u64(16)); record != nullptr) {
    class_entry_ = cache != nullptr ? cache->get_class_entry(view, record)
                                    : std::make_shared<ClassEntry>(view, record, nullptr, -1);
  }
  if (!is_user()) return;
  filename_ = fields.text(32);
  line_no_ = fields.u32(40);
}

std::uint8_t Function::type_byte() const {
  std::uint8_t first = 0;
  std::memcpy(&first, &type_, sizeof first);
  return first;
}

QString Function::full_name() const {
  const QString own = name().to_string();
  return class_entry_ == nullptr ? own
                                 : class_entry_->name().to_string() + QStringLiteral("::") + own;
}

void Function::collect(JsonMembers& members) const {
  members.string(Key::name, name());
  if (index_ >= 0) members.number(Key::id, index_);
  if (is_user() && !filename().is_empty()) {
    members.string(Key::filename, filename());
    members.number(Key::line_no, line_no_);
  }
  if (class_entry_ == nullptr) return;
  if (class_entry_->id() >= 0) {
    members.number(Key::class_, class_entry_->id());
  } else {
    members.part(Key::class_, *class_entry_);
  }
}

QJsonObject Function::as_json() const {
  JsonMembers members;
  collect(members);
  return members.as_json();
}

}  // namespace Checkpoint

std::shared_ptr<Checkpoint::ClassEntry> EntityCache::get_class_entry(const CheckpointView& view,
                                                                     const ClassEntry* record) {
  const std::uint32_t id = class_index_.number(place_of(view, record), class_entries_.size());
  if (id == class_entries_.size()) {
    class_entries_.push_back(
        std::make_shared<Checkpoint::ClassEntry>(view, record, this, static_cast<int>(id)));
  }
  return class_entries_[id];
}

std::shared_ptr<Checkpoint::Function> EntityCache::get_function(const CheckpointView& view,
                                                                const Function* descriptor) {
  const std::uint32_t index = function_index_.number(place_of(view, descriptor), functions_.size());
  if (index == functions_.size()) {
    functions_.push_back(
        std::make_shared<Checkpoint::Function>(view, descriptor, this, static_cast<int>(index)));
  }
  return functions_[index];
}

}  // namespace CT
