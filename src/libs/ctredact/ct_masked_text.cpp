// SPDX-License-Identifier: MIT
#include "ctredact/ct_masked_text.h"

#include <algorithm>

#include "ctredact/ct_bytes.h"

namespace CT::Redact {

namespace {

// Text that is serialised in a text: s:N:"...", and the names of O:N:"...", C: and E:.
struct Frame {
  std::uint32_t digits;  // where N stands
  std::uint32_t digits_end;
  std::uint64_t size;  // N
  std::uint64_t end;   // of its content
  std::int64_t growth = 0;
};

// A frame of which the colon before N is at `at`.
bool read_frame(std::string_view text, std::size_t at, bool is_cut, Frame& frame) {
  constexpr std::size_t most_digits = 9;
  constexpr std::string_view letters = "sSOCE";
  if (at == 0 || letters.find(text[at - 1]) == std::string_view::npos) return false;
  if (at > 1 && is_alnum(text[at - 2])) return false;
  std::size_t i = at + 1;
  std::uint64_t size = 0;
  while (i < text.size() && i - at <= most_digits && is_digit(text[i])) {
    size = size * 10 + static_cast<std::uint64_t>(text[i++] - '0');
  }
  if (i == at + 1 || text.substr(i, 2) != ":\"") return false;
  const std::uint64_t end = i + 2 + size;
  const bool is_whole = end < text.size() && text[static_cast<std::size_t>(end)] == '"';
  if (!is_whole && !(is_cut && end >= text.size())) return false;
  frame = {static_cast<std::uint32_t>(at + 1), static_cast<std::uint32_t>(i), size, end};
  return true;
}

// Closes the innermost frame.
void close(std::vector<Frame>& open, std::vector<Edit>& lengths) {
  const Frame frame = open.back();
  open.pop_back();
  std::int64_t growth = frame.growth;
  if (growth != 0) {
    std::string digits = std::to_string(static_cast<std::int64_t>(frame.size) + growth);
    growth += static_cast<std::int64_t>(digits.size()) - (frame.digits_end - frame.digits);
    lengths.push_back({frame.digits, frame.digits_end, std::move(digits)});
  }
  if (!open.empty()) open.back().growth += growth;
}

}  // namespace

void merge(std::vector<Range>& ranges) {
  if (ranges.size() < 2) return;
  std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) {
    if (a.begin != b.begin) return a.begin < b.begin;
    if (a.end != b.end) return a.end > b.end;
    return a.secret < b.secret;
  });
  std::size_t last = 0;
  std::uint32_t longest = ranges[0].end - ranges[0].begin;
  for (std::size_t i = 1; i != ranges.size(); ++i) {
    const Range& next = ranges[i];
    Range& merged = ranges[last];
    const std::uint32_t size = next.end - next.begin;
    if (next.begin >= merged.end) {
      ranges[++last] = next;
      longest = size;
      continue;
    }
    merged.end = std::max(merged.end, next.end);
    if (size <= longest || merged.secret == continued) continue;
    longest = size;
    merged.rule = next.rule;
    merged.secret = next.secret;
  }
  ranges.resize(last + 1);
}

void keep_lengths(std::string_view text, bool is_cut, std::vector<Edit>& edits) {
  if (edits.empty() || text.find(":\"") == std::string_view::npos) return;
  std::vector<Frame> open;
  std::vector<Edit> lengths;
  std::size_t next = 0;
  for (std::size_t at = 0; at < text.size();) {
    while (!open.empty() && at >= open.back().end) close(open, lengths);
    if (next != edits.size() && edits[next].begin <= at) {
      const Edit& edit = edits[next++];
      if (!open.empty()) {
        open.back().growth += static_cast<std::int64_t>(edit.text.size()) - (edit.end - edit.begin);
      }
      at = std::max<std::size_t>(edit.end, at);
      continue;
    }
    Frame frame{};
    if (text[at] == ':' && read_frame(text, at, is_cut, frame) &&
        (open.empty() || frame.end <= open.back().end) &&
        (next == edits.size() || frame.digits_end <= edits[next].begin)) {
      open.push_back(frame);
      at = frame.digits_end;
      continue;
    }
    ++at;
  }
  while (!open.empty()) close(open, lengths);
  if (lengths.empty()) return;
  for (Edit& length : lengths) edits.push_back(std::move(length));
  std::sort(edits.begin(), edits.end(),
            [](const Edit& a, const Edit& b) { return a.begin < b.begin; });
}

std::string_view MaskedText::make(std::string_view text, const std::vector<Range>& ranges,
                                  bool is_cut, bool is_tight) {
  edits_.clear();
  made_.clear();
  for (const Range& range : ranges) {
    std::string mask;
    if (range.secret == continued) {
      // Its mask stands in the text before.
    } else if (is_tight) {
      mask = Masks::tight;
    } else if (range.secret != no_secret) {
      mask = masks_.of(secrets_.name(range.secret));
    } else {
      mask = masks_.of(secrets_.name(text.substr(range.begin, range.end - range.begin)));
    }
    edits_.push_back({range.begin, range.end, std::move(mask)});
  }
  keep_lengths(text, is_cut, edits_);
  std::size_t at = 0;
  for (const Edit& edit : edits_) {
    made_.append(text, at, edit.begin - at);
    made_ += edit.text;
    at = edit.end;
  }
  made_.append(text, at, text.size() - at);
  return made_;
}

}  // namespace CT::Redact
