// SPDX-License-Identifier: MIT
//
// One damaged trace: what salvaging has to make of it, judged by a reading of its own.
#pragma once

#include <string>
#include <vector>

#include "damage.h"

namespace CT::SalvageTest {

// A checkpoint by what damage elsewhere does not change: not by its references.
struct Mark {
  std::uint64_t offset = 0;  // in the file
  std::uint64_t end = 0;
  std::uint64_t hash = 0;
};

// Of a trace that is whole as far as its frames go.
std::vector<Mark> marks_of(const Octets& trace);
Places places_of(const Octets& trace);

struct Outcome {
  std::vector<std::string> failures;
  double kept_behind = 1;  // of whole checkpoints behind a hole, the share
  double kept = 1;         // of all
};

Outcome try_salvage(const std::vector<Mark>& marks, const Damage& damage, const Octets& damaged);

}  // namespace CT::SalvageTest
