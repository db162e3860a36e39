// SPDX-License-Identifier: MIT
//
// RandomDamage: damages the bytes of a trace file. Nearly all of what it does leaves the header's
// sizes true, so that a reader gets to the damage: payloads cut at any byte, header words
// overwritten, bits flipped, sections cut, ranges duplicated, checkpoints swapped or lost,
// references led astray. It knows the bytes only, not what they were made from.
#pragma once

#include <string>
#include <string_view>

#include "awkward.h"
#include "trace_parts.h"

namespace CT::Test {

class RandomDamage {
 public:
  // Borrows `random`.
  explicit RandomDamage(Awkward& random) : random_(random) {}

  // One to four damages behind the file header.
  std::string inside(std::string_view file);
  // The file header or the file's size are wrong.
  std::string outside(std::string file);

 private:
  void one(TraceParts& parts);
  void cut_payload(TraceParts& parts);
  void change_word(TraceParts& parts);
  void flip_bits(std::string& section);
  void cut_end(std::string& section);
  void duplicate_range(std::string& section);
  void duplicate_checkpoint(TraceParts& parts);
  void lose_checkpoint(TraceParts& parts);
  void overwrite(std::string& section);
  void lead_astray(TraceParts& parts);
  void change_header(TraceParts& parts);

  std::string& any_section(TraceParts& parts) {
    return random_.one_in(4) ? parts.add_data : parts.data;
  }

  Awkward& random_;
};

}  // namespace CT::Test
