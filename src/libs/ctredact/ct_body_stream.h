// SPDX-License-Identifier: MIT
//
// What a script wrote, piece by piece, as the one text that the client got: secrets that were
// written in several pieces, and values of which the name was written before, are found in it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ctredact/ct_masked_text.h"

namespace CT::Redact {

// Pieces are gathered into windows of a bounded size that overlap.
class BodyStream {
 public:
  // What is secret in a window is found by `find`, which appends ranges of it.
  using Find = std::function<void(std::string_view window, std::vector<Range>& ranges)>;
  explicit BodyStream(Find find) : find_(std::move(find)) {}

  // The next piece. If the tracer cut it, nothing goes on behind it.
  void add(std::string_view piece, bool is_cut);
  // The end of all pieces. Requires: before ranges_of().
  void finish();

  // Appends what is secret in a piece, by its number from 0. Requires: numbers that rise, or the
  // last one once more.
  void ranges_of(std::uint32_t piece, std::vector<Range>& out);

 private:
  struct Piece {
    std::size_t begin;  // in the window
    std::uint32_t number;
    std::size_t skipped = 0;  // bytes of it that are no longer in the window
  };
  struct Found {
    std::uint32_t piece;
    Range range;
  };

  void search(std::size_t before);
  void note(const Range& range);

  Find find_;
  std::string window_;
  std::vector<Piece> pieces_;
  std::uint32_t count_ = 0;
  std::vector<Range> ranges_;  // of one window
  std::vector<Found> found_;   // sorted by piece, once finished
  std::size_t next_ = 0;
};

}  // namespace CT::Redact
