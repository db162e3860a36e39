// SPDX-License-Identifier: MIT
//
// Values as plain JSON, the form that programs and queries work with: a list is an array, a map an
// object, and nothing is wrapped. What the tracer cut ends in "**CUT**": behind a text, as the last
// item of a list, as the last member of a map, true.
//
//   undef, null   null                        object     {"class": "Note", "handle": 7}
//   double        always with a point or an   resource   {"resource": "stream", "handle": 3}
//                 exponent; "NaN", "Infinity", "-Infinity" where JSON has no number
//
// A map's members stand in the order of the file, and of those whose keys are equal as text only
// the last. Keys are texts and numbers; others, which PHP cannot make, get a short text of their
// type.
#pragma once

#include <cstdint>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_value_ref.h"
#include "codetrace/render/ct_json.h"

namespace CT::Checkpoint {

// As a number, or as a text where a double would lose digits.
void write_exact(std::int64_t value, JsonWriter& out);

// Writes values; keeps its working memory from one to the next.
class PlainJsonWriter {
 public:
  // Many readers of JSON keep numbers as doubles, which lose digits beyond 2^53; for them such
  // whole numbers can be texts.
  enum class LargeNumbers : bool { numbers, texts };

  explicit PlainJsonWriter(LargeNumbers large = LargeNumbers::numbers)
      : large_as_text_(large == LargeNumbers::texts) {}
  PlainJsonWriter(const PlainJsonWriter&) = delete;
  PlainJsonWriter& operator=(const PlainJsonWriter&) = delete;

  void write(const ValueRef& value, JsonWriter& out);

 private:
  struct OpenArray {
    ValueTape::Index item;
    std::uint32_t next;   // of a list: the item of the next key; of a map: the next of members_
    std::uint32_t first;  // of a map: its members begin there
    std::uint32_t texts;  // of a map: the texts of its keys begin there
  };
  struct Member {
    std::uint32_t text;  // its key: where in texts_, and how long
    std::uint32_t size;
    ValueTape::Index value;
    bool is_dropped;  // a later one has the same key
  };

  void begin_value(const ValueTape& tape, ValueTape::Index i, JsonWriter& out);
  void open_map(const ValueTape& tape, ValueTape::Index i);
  void drop_repeated(std::uint32_t first);
  void put_key(const ValueTape& tape, ValueTape::Index key);
  bool begin_next(const ValueTape& tape, JsonWriter& out, ValueTape::Index& value);
  void close_array(const ValueTape& tape, JsonWriter& out);
  void write_whole(std::int64_t value, JsonWriter& out) const;
  void write_resource(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) const;
  void write_double(double value, JsonWriter& out);
  [[nodiscard]] std::string_view key_of(const Member& member) const {
    return texts_.view().substr(member.text, member.size);
  }

  bool large_as_text_;
  PlainArray<OpenArray> open_;
  PlainArray<Member> members_;         // of all open maps
  PlainArray<std::uint32_t> by_text_;  // of one map, while it is opened
  MemoryWriter texts_;                 // the keys of members_, as JSON text
  MemoryWriter digits_;
};

}  // namespace CT::Checkpoint
