// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_json.h"

#include <algorithm>

#include "codetrace/render/ct_text.h"

namespace CT {

void JsonWriter::text(std::string_view stored, std::string_view suffix) {
  out_.put('"');
  put_json_text(out_, stored);
  out_.put(suffix);
  out_.put('"');
}

bool json_key_less(std::string_view a, std::string_view b) {
  const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  if (x == a.end() || y == b.end()) return y != b.end();
  const auto left = static_cast<unsigned char>(*x);
  const auto right = static_cast<unsigned char>(*y);
  // Surrogates (lead bytes F0 to F4) sort before U+E000 to U+FFFF (lead bytes EE and EF).
  constexpr unsigned char first_above_surrogates = 0xEE;
  constexpr unsigned char first_beyond_bmp = 0xF0;
  if (left >= first_above_surrogates && right >= first_above_surrogates &&
      (left >= first_beyond_bmp) != (right >= first_beyond_bmp)) {
    return left >= first_beyond_bmp;
  }
  return left < right;
}

}  // namespace CT
