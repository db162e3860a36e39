// SPDX-License-Identifier: MIT
//
// Values in JSON, streamed. An array becomes an object with "array" (a JSON array for a list, else
// an object whose keys are the texts of its keys) and "cut" when the tracer cut it.
//
// Only the keys of the maps that are open at one moment are held in memory, to sort them; see
// ct_value_key.h for how little that is.
#pragma once

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/keys/ct_value_key.h"

namespace CT::Checkpoint {

// Writes values of a tape; keeps its working memory from one to the next.
class ValueJsonWriter {
 public:
  // Undef, for which JSON has nothing, is written as null; inside an object its key is left out.
  void write(const ValueTape& tape, ValueTape::Index root, JsonWriter& out);

 private:
  // A member of an open map: its key's text, and the item of its value.
  struct Member {
    KeyTexts::Key key;
    ValueTape::Index value;
    std::uint64_t hash;  // of the key's text, where that is needed
  };
  struct OpenArray {
    ValueTape::Index item;
    ValueTape::Index at;       // of a list: the item of the next key
    std::size_t first_member;  // of a map: its members are those from here on,
    std::size_t next_member;   // and this one is next
    KeyTexts::Mark keys;       // of a map: what there was before its own
  };

  bool begin_value(const ValueTape& tape, ValueTape::Index i, JsonWriter& out);
  void open_map(const ValueTape& tape, ValueTape::Index item);
  void drop_repeated_names(const ValueTape& tape, std::size_t first);
  template <class Compare>
  void sort_and_keep_last(std::size_t first, Compare compare);
  void drop_undef(const ValueTape& tape, std::size_t first);
  bool begin_next(const ValueTape& tape, JsonWriter& out, ValueTape::Index& value);
  void close_array(const ValueTape& tape, JsonWriter& out);

  PlainArray<OpenArray> open_;
  PlainArray<Member> members_;
  KeyTexts keys_;
};

}  // namespace CT::Checkpoint
