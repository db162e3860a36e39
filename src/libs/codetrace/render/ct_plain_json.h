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
// A map's keys are sorted and unique, as in the JSON document; of equal ones the last counts.
#pragma once

#include <memory>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_value_ref.h"
#include "codetrace/render/ct_json.h"

namespace CT::Checkpoint {

class OpenMaps;

// Writes values; keeps its working memory from one to the next.
class PlainJsonWriter {
 public:
  PlainJsonWriter();
  PlainJsonWriter(const PlainJsonWriter&) = delete;
  PlainJsonWriter& operator=(const PlainJsonWriter&) = delete;
  ~PlainJsonWriter();

  void write(const ValueRef& value, JsonWriter& out);

 private:
  struct OpenArray {
    ValueTape::Index item;
    ValueTape::Index at;  // of a list: the item of the next key
  };

  void begin_value(const ValueTape& tape, ValueTape::Index i, JsonWriter& out);
  bool begin_next(const ValueTape& tape, JsonWriter& out, ValueTape::Index& value);
  void close_array(const ValueTape& tape, JsonWriter& out);
  void write_double(double value, JsonWriter& out);

  PlainArray<OpenArray> open_;
  std::unique_ptr<OpenMaps> maps_;  // those of the open arrays that are maps; made for the first
  MemoryWriter digits_;
};

}  // namespace CT::Checkpoint
