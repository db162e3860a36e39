// SPDX-License-Identifier: MIT
//
// The functions that are open around a span, each with how deep it is in a recursion of itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ctexport/ct_callgrind_names.h"

namespace CT::Export {

class OpenFunctions {
 public:
  using Id = CallgrindNames::Id;
  static constexpr Id none = 0xFFFFFFFF;

  explicit OpenFunctions(CallgrindNames& names) : names_(names) {}

  // A span of this frame begins: the function that it is, in this recursion. None for what lies in
  // too deep a recursion: it is a part of the innermost function that does not.
  Id begin(std::int32_t frame) {
    const std::int32_t unit = names_.unit_of(frame);
    const auto at = static_cast<std::size_t>(unit);
    if (levels_.size() <= at) levels_.resize(at + 1);
    if (too_deep_ != 0 || levels_[at] == CallgrindNames::deepest) return begin_too_deep();
    open_.push_back(unit);
    return names_.entry(unit, ++levels_[at]);
  }
  // What begins now is too deep for another reason.
  Id begin_too_deep() {
    ++too_deep_;
    return none;
  }
  // Takes back the last begin().
  void leave() {
    --levels_[static_cast<std::size_t>(open_.back())];
    open_.pop_back();
  }
  // The innermost span ends: whether it was too deep.
  bool end() {
    if (too_deep_ != 0) {
      --too_deep_;
      return true;
    }
    leave();
    return false;
  }

 private:
  CallgrindNames& names_;
  std::vector<std::int32_t> levels_;  // how often each unit is open
  std::vector<std::int32_t> open_;
  std::size_t too_deep_ = 0;  // spans that are open there
};

}  // namespace CT::Export
