// SPDX-License-Identifier: MIT
//
// Damages that traces suffer, each made from a seed.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace CT::SalvageTest {

using Octets = std::vector<unsigned char>;

// Where the sections of a whole trace are.
struct Places {
  std::uint64_t data_begin = 36;
  std::uint64_t data_end = 36;
  std::uint64_t size = 36;
};

struct Damage {
  std::string_view kind;
  std::uint64_t begin = 0;   // the first byte that is not as it was
  std::uint64_t end = 0;     // of a hole: behind the last
  bool is_hole = false;      // in DATA, in place
  bool spares_data = false;  // all of DATA is as it was
};

// A damage by its number, which takes turns through the kinds, of this trace.
Damage make_damage(std::uint64_t number, const Places& places, Octets& trace);

}  // namespace CT::SalvageTest
