// SPDX-License-Identifier: MIT
//
// Rewriter: texts.
#include <algorithm>

#include "ctredact/ct_rewriter.h"

namespace CT::Redact {

void Rewriter::count(Place place) {
  for (const Range& range : ranges_) tally_.add(range.rule, place, node_);
}

std::string_view Rewriter::masked(std::string_view text, bool is_cut) {
  ranges_.clear();
  secrets_.find(text, is_cut, ranges_);
  if (ranges_.empty()) return text;
  count(place_);
  return mask_.make(text, ranges_, is_cut, is_tight_);
}

std::string_view Rewriter::masked_whole(std::string_view text, RuleId rule, bool is_cut) {
  if (text.empty()) return text;
  ranges_.assign(1, {0, static_cast<std::uint32_t>(text.size()), rule});
  count(place_);
  return mask_.make(text, ranges_, is_cut, is_tight_);
}

// What was cut stays so, unless it is nothing but a secret, whose size is nobody's business.
std::uint64_t Rewriter::original_size(const Checkpoint::String& before, std::string_view after,
                                      bool is_whole) {
  if (!before.is_cut() || is_whole) return 0;
  return std::max<std::uint64_t>(static_cast<std::uint64_t>(before.orig_sz), after.size() + 1);
}

void Rewriter::output(const Checkpoint::String& text) {
  ranges_.clear();
  if (strict_ != no_rule) {
    const std::string_view now = masked_whole(text.view(), strict_, text.is_cut());
    return writer_.cut_text(now, original_size(text, now, false));
  }
  body_.ranges_of(writes_, ranges_);
  if (ranges_.empty())
    return writer_.cut_text(text.view(), original_size(text, text.view(), false));
  merge(ranges_);
  count(place_);
  const std::string_view now = mask_.make(text.view(), ranges_, text.is_cut(), is_tight_);
  writer_.cut_text(now, original_size(text, now, false));
}

void Rewriter::inline_text(const Checkpoint::String& text) {
  writer_.inline_text(strict_ != no_rule ? masked_whole(text.view(), strict_, false)
                                         : masked(text.view(), false));
}

void Rewriter::header(std::uint8_t operation, const Checkpoint::String& line) {
  ranges_.clear();
  std::string_view now = line.view();
  if (strict_ != no_rule) {
    now = masked_whole(now, strict_, line.is_cut());
  } else {
    secrets_.find_in_header(now, line.is_cut(), ranges_);
    count(place_);
    if (!ranges_.empty()) now = mask_.make(now, ranges_, line.is_cut(), is_tight_);
  }
  writer_.header_line(operation, now, original_size(line, now, false));
}

Write::Reference Rewriter::text_of(std::uint64_t reference, Place place) {
  if (reference == 0) return 0;
  Recent& recent = recent_texts_[recent_slot(reference)];
  if (recent.before == reference) return recent.now;
  const AddDataTexts::Found found = texts_.find(reference);
  if (found.text == AddDataTexts::none) return 0;
  Written& written = written_[found.text];
  if (written.reference == 0) write_text(texts_.texts()[found.text], place, written);
  std::uint64_t offset = found.offset;
  const auto behind =
      std::upper_bound(written.changes.begin(), written.changes.end(), found.offset,
                       [](std::uint32_t at, const Change& change) { return at < change.begin; });
  if (behind != written.changes.begin()) {
    const Change& change = *(behind - 1);
    offset =
        found.offset < change.end ? change.new_begin : found.offset - change.end + change.new_end;
  }
  recent = {reference, written.reference != 0 ? written.reference + offset : 0};
  return recent.now;
}

void Rewriter::write_text(const AddDataTexts::Text& text, Place place, Written& written) {
  const std::string_view view = texts_.view(text);
  ranges_.clear();
  if (strict_ == no_rule) {
    secrets_.find(view, false, ranges_);
  } else if (!text.is_kept && !view.empty()) {
    ranges_.push_back({0, static_cast<std::uint32_t>(view.size()), strict_});
  }
  if (ranges_.empty()) {
    written.reference = writer_.text(view);
    return;
  }
  count(place);
  written.reference = writer_.text(mask_.make(view, ranges_, false, false));
  std::uint32_t at = 0;   // in the text
  std::uint32_t now = 0;  // in what was made of it
  for (const Edit& edit : mask_.edits()) {
    const std::uint32_t begin = now + (edit.begin - at);
    now = begin + static_cast<std::uint32_t>(edit.text.size());
    at = edit.end;
    written.changes.push_back({edit.begin, edit.end, begin, now});
  }
}

}  // namespace CT::Redact
