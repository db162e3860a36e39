// SPDX-License-Identifier: MIT
//
// The maps inside each other that are open while a value is written as JSON: their members, in the
// order of a JSON object. Of members with equal keys the last one counts, and it is left out if its
// value is undef.
//
// A member takes 24 bytes and its key those of its text, less the long names in it. Ordinary maps
// are sorted by MemberSorter, those with long names in their keys by what stands in keys/.
#pragma once

#include <memory>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_value_json_sort.h"
#include "codetrace/render/keys/ct_value_key.h"
#include "codetrace/render/keys/ct_value_key_order.h"

namespace CT::Checkpoint {

class OpenMaps {
 public:
  void clear();
  // Opens the map at an item of the tape, inside the one opened before.
  void open(const ValueTape& tape, ValueTape::Index item);
  // Starts the next member of the innermost map; false when there is none.
  bool begin_next(JsonWriter& out, ValueTape::Index& value);
  // Closes the innermost map.
  void close();

 private:
  struct Map {
    std::size_t first_member;  // its members are those from here on,
    std::size_t next_member;   // and this one is next
    KeyTexts::Mark keys;       // what there was before its own
  };

  MapMember* arrange(const KeyTexts::Mark& mark, MapMember* begin, MapMember* end);

  PlainArray<Map> maps_;
  PlainArray<MapMember> members_;
  KeyTexts keys_;
  MemberSorter sorter_;
  std::unique_ptr<LongKeyOrder> long_keys_;  // made for the first of them
};

}  // namespace CT::Checkpoint
