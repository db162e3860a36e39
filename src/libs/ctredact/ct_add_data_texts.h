// SPDX-License-Identifier: MIT
//
// The texts of ADD DATA that something refers to. References may lead into the middle of a text;
// then the text is the longest that one leads to, and is looked at once.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "codetrace/bytes/ct_cursor.h"

namespace CT::Redact {

class AddDataTexts {
 public:
  struct Text {
    std::uint32_t begin;  // in the section
    std::uint32_t end;    // its NUL
    bool is_kept;         // the name of something built in
  };
  static constexpr std::uint32_t none = UINT32_MAX;

  // Borrows: the section, whose eighth it takes.
  explicit AddDataTexts(const Section& section);

  // Notes a text by a reference to it, which may lead nowhere. `is_kept`: it is a name of the
  // engine.
  void note(std::uint64_t reference, bool is_kept = false);
  // Finds the texts of what was noted.
  void finish();

  // The number of the text that a reference leads into, and where in it; none where it leads
  // nowhere. Requires: finish().
  struct Found {
    std::uint32_t text = none;
    std::uint32_t offset = 0;
  };
  [[nodiscard]] Found find(std::uint64_t reference) const;

  [[nodiscard]] const std::vector<Text>& texts() const { return texts_; }
  [[nodiscard]] std::string_view view(const Text& text) const {
    return {Section::as_chars(section_.data()) + text.begin, text.end - text.begin};
  }

 private:
  [[nodiscard]] std::uint32_t place_of(std::uint64_t reference) const;

  const Section& section_;
  std::vector<bool> noted_;
  std::vector<std::uint32_t> kept_;
  std::vector<Text> texts_;
};

}  // namespace CT::Redact
