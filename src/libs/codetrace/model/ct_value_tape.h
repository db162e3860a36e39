// SPDX-License-Identifier: MIT
//
// Decoded PHP values in flat form: a tape of eight-byte items in file order, an array followed by
// its keys and values. An item tells where its bytes lie in the payload and, for an array, where
// the array ends; numbers and texts are read there again when asked for. So a value of any depth is
// one block of memory: decoding, copying, printing and destroying need no recursion.
//
// A tape borrows the file's bytes and the table of classes. Values that the payload's end cuts
// short become undef; arrays around them keep the pairs whose key is whole.
#pragma once

#include <cassert>
#include <cstdint>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_entity.h"
#include "codetrace/model/ct_value_types.h"
#include "codetrace/model/ct_view.h"
#include "kcommon/k_export.h"

namespace CT::Checkpoint {

// An array that is being decoded.
struct ArrayFrame {
  std::uint32_t array;  // its item
  std::uint32_t pair;   // the item at which the current pair begins
  std::uint32_t left;   // pairs still to come, the current one included
  std::uint32_t kept;   // pairs kept while it is a list: the key that would continue it
  bool has_key;         // the current pair's key is complete
};

class CODETRACE_EXPORT ValueTape {
 public:
  using Index = std::uint32_t;

  // Empty, for values in a payload; keeps its memory. Objects are told their classes by `entities`,
  // which may be null. Borrows: all of it.
  void reset(const File* file, const unsigned char* payload, std::uint32_t size,
             const Entities* entities);
  void reset(const CheckpointView& view, const Entities* entities) {
    reset(&view.file(), view.payload(), view.size(), entities);
  }

  // Decodes the value at the cursor and leaves the cursor behind it. The class of an object that
  // the table does not have is unknown. Returns the value's item. If the cursor fails, what could
  // be read stands there: an array with its whole pairs, or undef; a cursor that does not lie in
  // the payload given to reset() gives undef.
  Index decode(Cursor& cursor);
  // Decodes `count` values that follow each other from the cursor on, or as many as there are; one
  // of which nothing is whole is dropped.
  void decode_all(const Cursor& cursor, std::uint32_t count);

  [[nodiscard]] const File& file() const { return *file_; }
  [[nodiscard]] const Entities* entities() const { return entities_; }
  // Behind the type code of an item; over nothing if it is not of this type.
  [[nodiscard]] Cursor body(Index i, ValueType type) const {
    if (this->type(i) != type) return {};
    const unsigned char* place = payload_ + items_[i].place;
    // An array that stands for a text of the cut marker has that text's code in the file.
    if (*place != static_cast<unsigned char>(type)) return {};
    return {place + 1, payload_end_, file_->big_endian()};
  }
  // Where an item's value begins in the payload: at its type code.
  [[nodiscard]] Cursor place_of(Index i) const {
    return {payload_ + items_[i].place, payload_end_, file_->big_endian()};
  }

  // Items so far: a value decoded next begins there.
  [[nodiscard]] Index size() const { return static_cast<Index>(items_.size()); }
  // Forgets every item from `size` on.
  void truncate(Index size) { items_.truncate(size); }

  [[nodiscard]] ValueType type(Index i) const { return static_cast<ValueType>(items_[i].type); }
  // The item behind the value and everything in it.
  [[nodiscard]] Index end(Index i) const {
    return type(i) == ValueType::array ? items_[i].link : i + 1;
  }

  // By type; anything else than the type allows is 0, absent or null.
  [[nodiscard]] std::int64_t as_long(Index i) const { return body(i, ValueType::long_).i64(); }
  [[nodiscard]] double as_double(Index i) const { return body(i, ValueType::double_).f64(); }
  [[nodiscard]] String string(Index i) const {
    Cursor cursor = body(i, ValueType::string);
    return get_cut_str(cursor);
  }
  [[nodiscard]] bool is_cut(Index i) const { return items_[i].cut != 0; }
  [[nodiscard]] bool is_list(Index i) const { return items_[i].list != 0; }
  [[nodiscard]] std::int32_t declared_count(Index i) const {
    return body(i, ValueType::array).i32();
  }
  [[nodiscard]] const ClassEntry* class_entry(Index i) const {
    return entities_ != nullptr ? entities_->find_class(body(i, ValueType::object).u64()) : nullptr;
  }
  [[nodiscard]] std::uint32_t object_handle(Index i) const {
    Cursor cursor = body(i, ValueType::object);
    cursor.u64();
    return cursor.u32();
  }
  [[nodiscard]] String resource_name(Index i) const;
  // Where that name begins in ADD DATA, not measured; null for none.
  [[nodiscard]] const unsigned char* resource_name_place(Index i) const;
  [[nodiscard]] std::int64_t resource_handle(Index i) const;

 private:
  friend class TapeDecoder;
  static_assert(value_types.size() <= 16, "the bits of an item's type");

  [[nodiscard]] CODETRACE_HIDDEN bool takes(const Cursor& cursor) const;

  struct Item {
    std::uint32_t place : 24;  // of the type code, from the payload's start
    std::uint32_t type : 4;
    std::uint32_t cut : 1;
    std::uint32_t list : 1;
    std::uint32_t marker : 1;  // a text that is the cut marker
    std::uint32_t link;        // array: the item behind it
  };

  const File* file_ = nullptr;
  const unsigned char* payload_ = nullptr;
  const unsigned char* payload_end_ = nullptr;
  const Entities* entities_ = nullptr;
  PlainArray<Item> items_;
  PlainArray<ArrayFrame> frames_;
};

// Steps over the values at the cursor as decode() would, keeping nothing; enters the classes of
// their objects into `entities` unless that is null.
void scan_values(Cursor& cursor, std::uint32_t count, Entities* entities);

}  // namespace CT::Checkpoint
