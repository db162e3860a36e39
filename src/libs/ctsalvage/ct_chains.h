// SPDX-License-Identifier: MIT
//
// Runs of checkpoints that follow each other without a gap, and what lies between them. Where a run
// breaks, the next byte at which a checkpoint begins is looked for, one after the other.
#pragma once

#include <cstdint>
#include <vector>

#include "ctsalvage/ct_look.h"

namespace CT::Salvage {

// Bytes by their offset in what is looked at.
struct Chain {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

// All of them from an offset on, in their order. `most`: ends after so many checkpoints.
std::vector<Chain> find_chains(const Looker& looker, std::uint64_t from,
                               std::uint64_t most = all_values);

// Calls visit(frame, offset) for each checkpoint of a chain; false of it ends the walk.
template <class Visit>
void each_checkpoint(const unsigned char* bytes, Order order, std::uint64_t begin,
                     std::uint64_t end, Visit&& visit) {
  for (std::uint64_t at = begin; at < end;) {
    const Frame frame = frame_at(bytes + at, order);
    if (!visit(frame, at)) return;
    at += frame.whole_size();
  }
}

}  // namespace CT::Salvage
