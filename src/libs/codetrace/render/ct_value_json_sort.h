// SPDX-License-Identifier: MIT
//
// Sorts the members of ordinary maps, all of whose keys were copied, and keeps the last of those
// with equal keys.
//
// Eight bytes of each key stand in its member, so most comparisons touch no other memory. Only
// where they are equal, the next eight are fetched, behind what the keys in question share.
#pragma once

#include <cstdint>
#include <string_view>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/render/keys/ct_value_key.h"

namespace CT::Checkpoint {

class MemberSorter {
 public:
  // Returns the end of those that are kept. `bytes` are those of the keys.
  MapMember* sort(std::string_view bytes, MapMember* begin, MapMember* end);

 private:
  // Members that agree in the first `depth` bytes of their keys, none of which is shorter.
  struct Group {
    MapMember* begin;
    MapMember* end;
    std::size_t depth;
  };

  void sort(std::string_view bytes, const Group& group);

  PlainArray<Group> groups_;  // still to be sorted
};

}  // namespace CT::Checkpoint
