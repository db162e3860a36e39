// SPDX-License-Identifier: MIT
//
// The words in which records are compared: what was to be written, by the model of the writer, and
// what the library reads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "codetrace/codetrace.h"

namespace CT::Fuzz {

inline std::string number_words(std::int64_t number) { return std::to_string(number) + " "; }

// A text with the size that it had. None is "- ".
inline std::string text_words(std::string_view text, std::uint64_t original_size) {
  std::string words = std::to_string(original_size);
  return words.append(":").append(text).append(" ");
}
inline std::string text_words(std::string_view text) { return text_words(text, text.size()); }

inline constexpr std::string_view no_words = "- ";

// Of each record of the file, by its offset in DATA.
std::vector<std::pair<std::uint32_t, std::string>> words_of(const File& file);

}  // namespace CT::Fuzz
