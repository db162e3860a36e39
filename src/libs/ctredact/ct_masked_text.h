// SPDX-License-Identifier: MIT
//
// A text with masks in place of its secrets. Where it is PHP's serialisation the lengths in it are
// those of what now stands there.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ctredact/ct_masks.h"
#include "ctredact/ct_secret_set.h"

namespace CT::Redact {

// What stands for a part of a text. The parts of a list rise and do not overlap.
struct Edit {
  std::uint32_t begin;
  std::uint32_t end;
  std::string text;
};

// Ranges that overlap become one, which is called after the longest of them. They are sorted.
void merge(std::vector<Range>& ranges);

// Adds the edits that keep the lengths of s:N:"..." and its like true, however deep they lie in
// each other. `is_cut`: what runs past the end of the text counts, too.
void keep_lengths(std::string_view text, bool is_cut, std::vector<Edit>& edits);

class MaskedText {
 public:
  // Borrows both.
  MaskedText(Masks& masks, const SecretSet& secrets) : masks_(masks), secrets_(secrets) {}

  // Makes a text of another one and of merged ranges in it; valid until the next. With is_tight it
  // is no longer than the other.
  std::string_view make(std::string_view text, const std::vector<Range>& ranges, bool is_cut,
                        bool is_tight);
  // What was changed in the last text.
  [[nodiscard]] const std::vector<Edit>& edits() const { return edits_; }

 private:
  Masks& masks_;
  const SecretSet& secrets_;
  std::vector<Edit> edits_;
  std::string made_;
};

// The range continues one in the text before: its mask stands there, and nothing here.
inline constexpr std::uint32_t continued = UINT32_MAX - 1;

}  // namespace CT::Redact
