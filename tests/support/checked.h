// SPDX-License-Identifier: MIT
//
// What a check says of the bytes of a file.
#pragma once

#include <string>

#include "codetrace/ct_file.h"
#include "ctcheck/ct_check.h"

namespace CT::Test {

inline Check::Result checked(const std::string& bytes, const Check::Options& options = {}) {
  const std::string padded = bytes + std::string(File::padding, '\0');
  const void* const begin = padded.data();
  return Check::check({static_cast<const unsigned char*>(begin), bytes.size()}, options);
}

// The names of what is wrong, each once, with how many there are if it is more than one:
// "CT-SIZE CT-UNUSED*2".
inline std::string codes_of(const Check::Result& result) {
  std::string text;
  for (const Check::CodeInfo& info : Check::codes) {
    const std::uint64_t count = result.count(info.code);
    if (count == 0) continue;
    text.append(text.empty() ? "" : " ").append(info.name);
    if (count > 1) text.append("*").append(std::to_string(count));
  }
  return text;
}

}  // namespace CT::Test
