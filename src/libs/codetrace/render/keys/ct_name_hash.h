// SPDX-License-Identifier: MIT
//
// Hashes of decoded texts, so that keys with names of megabytes can be told apart without reading
// them again and again, also when each begins at another byte of one text.
//
// The hash is a polynomial in the bytes: the hash of two texts in a row follows from both. So one
// pass over a text of ADD DATA, from its end, gives the hashes of all its tails; every 256th is
// kept, and those between are a few steps away. No text is passed over twice.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "codetrace/ct_file.h"

namespace CT {

struct TextHash {
  std::uint64_t value = 0;
  std::uint64_t power = 1;  // the base to the power of the text's length

  friend bool operator==(const TextHash&, const TextHash&) = default;
};

// Of a text and another one behind it.
TextHash join(const TextHash& head, const TextHash& tail);

TextHash hash_text(std::string_view decoded);

class NameHashes {
 public:
  // Of the decoded text that begins at `place` in the file's ADD DATA. Requires: always the same
  // file, and a place inside.
  TextHash of(const File& file, const unsigned char* place);

 private:
  // The tails that begin at a byte and at the three behind it: a character has four bytes at most.
  struct Tails {
    TextHash from[4];
  };
  // A text between two NULs, and its tails at every `spacing` bytes from its end.
  struct Text {
    const unsigned char* begin;
    std::vector<Tails> kept;
  };

  static Tails step_back(const Tails& tails, const unsigned char* to, const unsigned char* end);
  const Text& text_around(const File& file, const unsigned char* place, const unsigned char*& end);

  static constexpr std::ptrdiff_t spacing = 256;
  std::map<const unsigned char*, Text> texts_;  // by their ends
};

}  // namespace CT
