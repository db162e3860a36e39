// SPDX-License-Identifier: MIT
//
// Whether the reader would take a checkpoint as it is, by the reader's own rules.
#pragma once

#include "ctsalvage/ct_names.h"

namespace CT::Salvage {

enum class Judgement : std::uint8_t {
  whole,         // as it is
  renamed,       // once references of it lead to names that are invented
  mendable,      // a field is lost, and can be told as lost
  broken,        // what places it in the tree is lost
  unknown_type,  // no reader takes it
};

// Requires: that the whole checkpoint is there.
inline Judgement judge(const Frame& frame, Order order, Names& names) {
  const Checkpoint::TypeInfo& info = frame.info();
  if (info.role == Checkpoint::Role::none) return Judgement::unknown_type;
  if (frame.size == 0) return info.needs_payload ? Judgement::broken : Judgement::whole;
  bool is_renamed = false;
  PayloadWalk walk(frame, order, all_values);
  const bool is_whole = walk.run([&](Refers kind, const unsigned char* place) {
    if (kind != Refers::begin && !names.check(kind, order.u64(place))) is_renamed = true;
  });
  if (is_whole) return is_renamed ? Judgement::renamed : Judgement::whole;
  const bool is_placed = walk.broken_field() > 0;
  if (walk.broken_field() < 0) return Judgement::broken;
  constexpr std::uint32_t room = 128;  // for what is put in place of fields
  if (frame.size > Format::largest_payload - room) return Judgement::broken;
  if (!is_placed && (frame.is_call() || frame.is_end())) return Judgement::broken;
  return Judgement::mendable;
}

}  // namespace CT::Salvage
