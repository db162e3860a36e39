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
