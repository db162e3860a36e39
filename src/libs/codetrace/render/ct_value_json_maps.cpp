// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_value_json_maps.h"

#include <algorithm>

namespace CT::Checkpoint {

void OpenMaps::clear() {
  maps_.clear();
  members_.clear();
  keys_.truncate({});
}

void OpenMaps::open(const ValueTape& tape, ValueTape::Index item) {
  const std::size_t first = members_.size();
  const KeyTexts::Mark mark = keys_.mark();
  for (ValueTape::Index key = item + 1; key != tape.end(item);) {
    members_.push_back(keys_.add(tape, key));
    key = tape.end(members_.back().value);
  }
  MapMember* const end = arrange(mark, members_.begin() + first, members_.end());
  members_.truncate(static_cast<std::size_t>(end - members_.begin()));
  maps_.push_back({first, first, mark});
}

// Returns the end of those that are kept.
MapMember* OpenMaps::arrange(const KeyTexts::Mark& mark, MapMember* begin, MapMember* end) {
  const auto is_undef = [](const MapMember& member) { return member.is_undef != 0; };
  if (keys_.mark().names == mark.names) {
    end = sorter_.sort(keys_.bytes(), begin, end);
    return std::remove_if(begin, end, is_undef);
  }
  const auto is_ordinary = [&](const MapMember& member) { return !keys_.has_names(member); };
  MapMember* const first_long = std::partition(begin, end, is_ordinary);
  MapMember* const last_short = sorter_.sort(keys_.bytes(), begin, first_long);
  if (long_keys_ == nullptr) long_keys_ = std::make_unique<LongKeyOrder>();
  return long_keys_->arrange(keys_, begin, std::copy(first_long, end, last_short));
}

bool OpenMaps::begin_next(JsonWriter& out, ValueTape::Index& value) {
  Map& map = maps_.back();
  if (map.next_member == members_.size()) return false;
  const MapMember& member = members_[map.next_member++];
  value = member.value;
  keys_.write(member, out);
  return true;
}

void OpenMaps::close() {
  const Map& map = maps_.back();
  members_.truncate(map.first_member);
  keys_.truncate(map.keys);
  maps_.pop_back();
}

}  // namespace CT::Checkpoint
