// SPDX-License-Identifier: MIT
#include "ctsql/ct_function_names.h"

#include <algorithm>

#include "codetrace/render/ct_rendered.h"

namespace CT::Sql {

namespace {

bool has_short_names(const Section& names, const Checkpoint::Function& function) {
  const auto* entry = function.class_entry();
  return RenderedTexts::is_short(names, function.name_place()) &&
         (entry == nullptr || RenderedTexts::is_short(names, entry->name_place()));
}

}  // namespace

FunctionNames::FunctionNames(const Trace& trace) : entries_(trace.functions().size()) {
  // What all kept names come to is far below this for every true trace.
  constexpr std::size_t most = std::size_t{1} << 28;
  const Section& names = trace.file().add_data();
  for (const Checkpoint::Function& function : trace.functions()) {
    Entry& made = entries_[static_cast<std::size_t>(function.index())];
    if (texts_.size() < most && has_short_names(names, function)) keep(function, made);
    (made.size != 0 ? ordered_ : others_).push_back(function.index());
  }
  std::stable_sort(ordered_.begin(), ordered_.end(),
                   [&](std::int32_t a, std::int32_t b) { return name(a) < name(b); });
}

// A name without any text is not kept either.
void FunctionNames::keep(const Checkpoint::Function& function, Entry& made) {
  made.begin = static_cast<std::uint32_t>(texts_.size());
  const auto written = [&] { return static_cast<std::uint16_t>(texts_.size() - made.begin); };
  if (function.class_entry() != nullptr) {
    function.class_entry()->name().write(texts_);
    made.class_size = written();
    texts_.put("::");
  }
  function.name().write(texts_);
  made.size = written();
}

std::span<const std::int32_t> FunctionNames::in_order() const {
  return others_.empty() ? std::span(ordered_) : std::span<const std::int32_t>();
}

std::vector<std::int32_t> FunctionNames::candidates(std::string_view wanted) const {
  const auto less = [&](std::int32_t function, std::string_view text) {
    return name(function) < text;
  };
  auto at = std::lower_bound(ordered_.begin(), ordered_.end(), wanted, less);
  std::vector<std::int32_t> found = others_;
  for (; at != ordered_.end() && name(*at) == wanted; ++at) found.push_back(*at);
  std::sort(found.begin(), found.end());
  return found;
}

}  // namespace CT::Sql
