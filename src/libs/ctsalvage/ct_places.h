// SPDX-License-Identifier: MIT
//
// Where checkpoints lay in the writer's memory. An end names the address of its begin, so every
// call that stands whole in a chain tells how far the chain was moved since it was written: by
// bytes that are missing before it, or that are there twice, or by a block that changed its place.
// A place is an offset in the DATA that the writer had; the begin of an end is the checkpoint at
// its place.
#pragma once

#include <cstdint>
#include <vector>

#include "ctsalvage/ct_chains.h"

namespace CT::Salvage {

// Checkpoints that follow each other in the file and did so for the writer.
struct Piece {
  std::uint64_t begin = 0;  // offsets in the file
  std::uint64_t end = 0;
  std::int64_t place = 0;  // of the first

  [[nodiscard]] std::int64_t place_of(std::uint64_t offset) const {
    return place + static_cast<std::int64_t>(offset - begin);
  }
  [[nodiscard]] std::int64_t end_place() const { return place_of(end); }
};

// What chains tell of addresses as a whole.
struct Votes {
  std::uint64_t base = 0;  // where most of them say that the byte at offset 0 lay
  std::uint64_t for_it = 0;
  std::uint64_t all = 0;
};
// By the first `most` calls.
Votes vote(const Looker& looker, const std::vector<Chain>& chains, std::uint64_t most = all_values);
// The same for a base that is given.
Votes count_votes(const Looker& looker, const std::vector<Chain>& chains, std::uint64_t base,
                  std::uint64_t most = all_values);

// Chains cut where they were moved, each piece with its place. `base`: the writer's address of
// place 0, which is at the offset `first` unless something was moved.
std::vector<Piece> find_places(const Looker& looker, const std::vector<Chain>& chains,
                               std::uint64_t base, std::uint64_t first);

// What is done with pieces that cannot all be right.
struct Sorted {
  std::vector<Piece> pieces;   // by place, none of which overlap
  std::vector<Piece> doubled;  // dropped: their places are held by others
  std::uint64_t moved = 0;     // pieces that stood behind later ones
};
Sorted sort_places(const Looker& looker, std::vector<Piece> pieces);

}  // namespace CT::Salvage
