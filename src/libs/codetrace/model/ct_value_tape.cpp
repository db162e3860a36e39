// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_value_tape.h"

namespace CT::Checkpoint {

void ValueTape::reset(const File* file, const unsigned char* payload, std::uint32_t size,
                      const Entities* entities) {
  file_ = file;
  payload_ = payload;
  payload_end_ = payload_ + size;
  entities_ = entities;
  items_.clear();
  frames_.clear();  // not empty if memory ended while a value was decoded
}

Cursor ValueTape::body(Index i, ValueType type) const {
  if (this->type(i) != type) return {};
  const unsigned char* place = payload_ + items_[i].place;
  // An array that stands for a text of the cut marker has that text's code in the file.
  if (*place != static_cast<unsigned char>(type)) return {};
  return {place + 1, payload_end_, file_->big_endian()};
}

std::int64_t ValueTape::as_long(Index i) const { return body(i, ValueType::long_).i64(); }

double ValueTape::as_double(Index i) const { return body(i, ValueType::double_).f64(); }

String ValueTape::string(Index i) const {
  Cursor cursor = body(i, ValueType::string);
  return get_cut_str(cursor);
}

std::int32_t ValueTape::declared_count(Index i) const { return body(i, ValueType::array).i32(); }

const ClassEntry* ValueTape::class_entry(Index i) const {
  if (entities_ == nullptr) return nullptr;
  return entities_->find_class(body(i, ValueType::object).u64());
}

std::uint32_t ValueTape::object_handle(Index i) const {
  Cursor cursor = body(i, ValueType::object);
  cursor.u64();
  return cursor.u32();
}

String ValueTape::resource_name(Index i) const {
  const unsigned char* place = resource_name_place(i);
  return place != nullptr ? section_str(*file_, place) : String();
}

const unsigned char* ValueTape::resource_name_place(Index i) const {
  // Where there is no resource, there may be no file either: on the tape of a record of no
  // checkpoint.
  if (type(i) != ValueType::resource) return nullptr;
  return file_->add_data().resolve(body(i, ValueType::resource).u64());
}

std::int64_t ValueTape::resource_handle(Index i) const {
  Cursor cursor = body(i, ValueType::resource);
  cursor.u64();
  return cursor.i64();
}

}  // namespace CT::Checkpoint
