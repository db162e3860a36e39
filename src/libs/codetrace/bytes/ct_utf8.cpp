// SPDX-License-Identifier: MIT
#include "codetrace/bytes/ct_utf8.h"

namespace CT {

std::size_t utf8_sequence_length(const unsigned char* p, const unsigned char* end) {
  const auto continues = [&](std::size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
    return p[i] >= low && p[i] <= high;
  };
  const auto left = static_cast<std::size_t>(end - p);
  const unsigned lead = *p;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  if (lead < 0xE0) return left >= 2 && continues(1) ? 2 : 0;
  if (lead < 0xF0) {
    const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : 0xBF;
    return left >= 3 && continues(1, low, high) && continues(2) ? 3 : 0;
  }
  const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
  const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
  return left >= 4 && continues(1, low, high) && continues(2) && continues(3) ? 4 : 0;
}

std::string_view take_character(std::string_view& stored) {
  const auto* first = static_cast<const unsigned char*>(static_cast<const void*>(stored.data()));
  const std::size_t length = *first < 0x80 ? 1 : utf8_sequence_length(first, first + stored.size());
  const std::string_view character = length != 0 ? stored.substr(0, length) : replacement_character;
  stored.remove_prefix(length != 0 ? length : 1);
  return character;
}

}  // namespace CT
