// SPDX-License-Identifier: MIT
#include "ctredact/ct_body_stream.h"

#include <algorithm>

namespace CT::Redact {

namespace {

constexpr std::size_t window_size = std::size_t{1} << 20;
// What two windows share; a secret in its second half is found in the second window, which has so
// much of what stands before it.
constexpr std::size_t overlap = std::size_t{64} << 10;

}  // namespace

void BodyStream::add(std::string_view piece, bool is_cut) {
  pieces_.push_back({window_.size(), count_++});
  window_ += piece;
  if (is_cut) {
    search(window_.size());
    window_.clear();
    pieces_.clear();
  } else if (window_.size() >= window_size) {
    search(window_.size() - overlap / 2);
    const std::size_t kept = window_.size() - overlap;
    std::size_t first = 0;
    while (first + 1 != pieces_.size() && pieces_[first + 1].begin <= kept) ++first;
    pieces_.erase(pieces_.begin(), pieces_.begin() + static_cast<std::ptrdiff_t>(first));
    window_.erase(0, kept);
    pieces_[0].skipped += kept - pieces_[0].begin;
    pieces_[0].begin = kept;
    for (Piece& row : pieces_) row.begin -= kept;
  }
}

void BodyStream::finish() {
  search(window_.size());
  window_ = {};
  pieces_ = {};
  ranges_ = {};
  std::stable_sort(found_.begin(), found_.end(),
                   [](const Found& a, const Found& b) { return a.piece < b.piece; });
}

// Notes what begins before a place of the window.
void BodyStream::search(std::size_t before) {
  if (window_.empty()) return;
  ranges_.clear();
  find_(window_, ranges_);
  merge(ranges_);
  for (const Range& range : ranges_) {
    if (range.begin < before) note(range);
  }
}

// In each piece that it touches.
void BodyStream::note(const Range& range) {
  auto piece =
      std::upper_bound(pieces_.begin(), pieces_.end(), range.begin,
                       [](std::size_t place, const Piece& row) { return place < row.begin; });
  --piece;
  bool is_first = true;
  for (; piece != pieces_.end() && piece->begin < range.end; ++piece) {
    const std::size_t end = piece + 1 == pieces_.end() ? window_.size() : (piece + 1)->begin;
    const std::size_t from = std::max<std::size_t>(range.begin, piece->begin) - piece->begin;
    const std::size_t to = std::min<std::size_t>(range.end, end) - piece->begin;
    if (from >= to) continue;
    const Range part = {static_cast<std::uint32_t>(from + piece->skipped),
                        static_cast<std::uint32_t>(to + piece->skipped), range.rule,
                        is_first ? range.secret : continued};
    is_first = false;
    found_.push_back({piece->number, part});
  }
}

void BodyStream::ranges_of(std::uint32_t piece, std::vector<Range>& out) {
  while (next_ != found_.size() && found_[next_].piece < piece) ++next_;
  for (std::size_t i = next_; i != found_.size() && found_[i].piece == piece; ++i) {
    out.push_back(found_[i].range);
  }
}

}  // namespace CT::Redact
