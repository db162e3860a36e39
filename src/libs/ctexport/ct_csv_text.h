// SPDX-License-Identifier: MIT
//
// Fields of comma-separated values, as RFC 4180 has them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "codetrace/render/ct_text.h"
#include "codetrace/render/ct_writer.h"

namespace CT::Export {

// Whether a field has to stand in quotes.
inline bool needs_quotes(std::string_view field) {
  static constexpr auto special = [] {
    std::array<bool, 256> table{};
    for (const char c : {',', '"', '\r', '\n'}) table[static_cast<unsigned char>(c)] = true;
    return table;
  }();
  return std::any_of(field.begin(), field.end(),
                     [](char c) { return special[static_cast<unsigned char>(c)]; });
}

// In quotes where it must be; what is not UTF-8 is U+FFFD. Kept: a field that begins like a formula
// is written as it is, so that programs get the text of the trace.
inline void put_csv(Writer& out, std::string_view stored) {
  if (!needs_quotes(stored)) return put_text(out, stored);
  out.put('"');
  // Each piece but the first begins with a quote, so no byte-order mark inside of the text is lost.
  std::size_t end = std::min(stored.find('"'), stored.size());
  put_text(out, stored.substr(0, end));
  while (end != stored.size()) {
    const std::size_t begin = end;
    end = std::min(stored.find('"', begin + 1), stored.size());
    out.put('"');
    put_text(out, stored.substr(begin, end - begin));
  }
  out.put('"');
}

}  // namespace CT::Export
