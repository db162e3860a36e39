// SPDX-License-Identifier: MIT
//
// The text of a value by what its tape says of its arrays: what a writer that reads values in place
// is held against.
#pragma once

#include <optional>
#include <string>

#include "codetrace/render/ct_value_text.h"
#include "written.h"

namespace CT::Test {

// Nothing for a value that is nested deeper than so many levels.
inline std::optional<std::string> tape_text(const Checkpoint::ValueRef& value, int levels = 200) {
  if (value.type() != Checkpoint::ValueType::array) {
    return written([&](Writer& out) { Checkpoint::ValueTextWriter().write(value, out); });
  }
  if (levels == 0) return std::nullopt;
  std::string pairs;
  for (const auto& [key, element] : value.elements()) {
    const auto key_text = tape_text(key, levels - 1);
    const auto element_text = tape_text(element, levels - 1);
    if (!key_text || !element_text) return std::nullopt;
    if (!pairs.empty()) pairs += ", ";
    pairs += *key_text + " => " + *element_text;
  }
  if (value.is_cut()) pairs += pairs.empty() ? "..." : ", ...";
  return "array(" + pairs + ")";
}

}  // namespace CT::Test
