// SPDX-License-Identifier: MIT
//
// Values in JSON, streamed. An array becomes an object with "array" (a JSON array for a list, else
// an object whose keys are the texts of its keys) and "cut" when the tracer cut it.
//
// Only the keys of the maps that are open at one moment are held in memory, to sort them; see
// ct_value_json_maps.h for how little that is.
#pragma once

#include <memory>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_json.h"

namespace CT::Checkpoint {

class OpenMaps;

// Writes values of one file, tape by tape; keeps its working memory from one to the next.
class ValueJsonWriter {
 public:
  ValueJsonWriter();
  ValueJsonWriter(const ValueJsonWriter&) = delete;
  ValueJsonWriter& operator=(const ValueJsonWriter&) = delete;
  ~ValueJsonWriter();

  // Undef, for which JSON has nothing, is written as null; inside an object its key is left out.
  void write(const ValueTape& tape, ValueTape::Index root, JsonWriter& out);

 private:
  struct OpenArray {
    ValueTape::Index item;
    ValueTape::Index at;  // of a list: the item of the next key
  };

  void forget();
  bool begin_value(const ValueTape& tape, ValueTape::Index i, JsonWriter& out);
  bool begin_next(const ValueTape& tape, JsonWriter& out, ValueTape::Index& value);
  void close_array(const ValueTape& tape, JsonWriter& out);

  PlainArray<OpenArray> open_;
  std::unique_ptr<OpenMaps> maps_;  // those of the open arrays that are maps; made for the first
};

}  // namespace CT::Checkpoint
