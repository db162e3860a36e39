// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_places.h"

#include <algorithm>

namespace CT::Salvage {

namespace {

using Checkpoint::Role;

// Pairs an end with the begin right before it, where nothing can have been lost between them:
// visit(offset of the begin, reference of the end) for each such pair of a chain.
template <class Visit>
void each_pair(const Looker& looker, const Chain& chain, std::vector<std::uint64_t>& open,
               Visit&& visit) {
  open.clear();
  each_checkpoint(looker.bytes(), looker.order(), chain.begin, chain.end,
                  [&](const Frame& frame, std::uint64_t offset) {
                    if (frame.role() == Role::span) {
                      open.assign(1, offset);
                    } else if (frame.is_end() && !open.empty()) {
                      const std::uint32_t common = frame.common_size();
                      const std::uint64_t begin = open.back();
                      open.pop_back();
                      if (frame.size < common + Format::reference_size) return true;
                      visit(begin, looker.order().u64(frame.reference()));
                    } else {
                      open.clear();
                    }
                    return true;
                  });
}

// Where each of the first pairs says that the byte at offset 0 lay.
template <class Visit>
void each_vote(const Looker& looker, const std::vector<Chain>& chains, std::uint64_t most,
               Visit&& visit) {
  std::vector<std::uint64_t> open;
  for (const Chain& chain : chains) {
    each_pair(looker, chain, open, [&](std::uint64_t begin, std::uint64_t reference) {
      if (most == 0) return;
      --most;
      visit(reference - begin);
    });
  }
}

// The shift of a chain, as its pairs tell it one after the other. Two that agree on another one are
// believed; a single one only where nothing else is known.
class Shifter {
 public:
  Shifter(std::int64_t shift, std::uint64_t begin, std::uint64_t most)
      : shift_(shift), begin_(begin), split_(begin), most_(static_cast<std::int64_t>(most)) {}

  // A pair whose begin is at an offset says that this is the shift there. True if a piece ends at
  // split(), for another shift() begins there.
  bool hear(std::int64_t said, std::uint64_t offset) {
    if (said == shift_) {
      has_agreed_ = true;
      votes_ = 0;
      return false;
    }
    const std::int64_t place = static_cast<std::int64_t>(offset) + said;
    if (said > most_ || said < -most_ || place < 0) return false;
    if (votes_ == 0 || said != other_) {
      other_ = said;
      votes_ = 0;
      split_ = has_agreed_ ? offset : begin_;
    }
    if (++votes_ < 2) return false;
    take();
    return true;
  }
  // The end of the chain: true as above.
  bool end() {
    if (has_agreed_ || votes_ == 0) return false;
    take();
    return true;
  }
  [[nodiscard]] std::int64_t shift() const { return shift_; }
  [[nodiscard]] std::uint64_t split() const { return split_; }

 private:
  void take() {
    shift_ = other_;
    votes_ = 0;
    has_agreed_ = true;
  }

  std::int64_t shift_;
  std::uint64_t begin_;
  std::uint64_t split_;
  std::int64_t most_;
  std::int64_t other_ = 0;
  int votes_ = 0;
  bool has_agreed_ = false;
};

// Cuts a piece before the first checkpoint whose place is not before `place`.
Piece cut_before(const Looker& looker, const Piece& piece, std::int64_t place) {
  Piece cut = piece;
  each_checkpoint(looker.bytes(), looker.order(), piece.begin, piece.end,
                  [&](const Frame& frame, std::uint64_t offset) {
                    cut.end = offset;
                    if (piece.place_of(offset + frame.whole_size()) > place) return false;
                    cut.end = offset + frame.whole_size();
                    return true;
                  });
  return cut;
}

// What is left of a piece from the first checkpoint on that lies at a place or behind it.
Piece cut_behind(const Looker& looker, const Piece& piece, std::int64_t place) {
  std::uint64_t begin = piece.end;
  each_checkpoint(looker.bytes(), looker.order(), piece.begin, piece.end,
                  [&](const Frame&, std::uint64_t offset) {
                    if (piece.place_of(offset) < place) return true;
                    begin = offset;
                    return false;
                  });
  return {begin, piece.end, piece.place_of(begin)};
}

void add_part(std::vector<Piece>& parts, const Piece& piece, std::uint64_t begin,
              std::uint64_t end) {
  if (begin != end) parts.push_back({begin, end, piece.place_of(begin)});
}

}  // namespace

Votes vote(const Looker& looker, const std::vector<Chain>& chains, std::uint64_t most) {
  std::uint64_t base = 0;
  std::uint64_t lead = 0;
  each_vote(looker, chains, most, [&](std::uint64_t said) {
    if (lead == 0) base = said;
    lead = said == base ? lead + 1 : lead - 1;
  });
  return count_votes(looker, chains, base, most);
}

Votes count_votes(const Looker& looker, const std::vector<Chain>& chains, std::uint64_t base,
                  std::uint64_t most) {
  Votes votes;
  votes.base = base;
  each_vote(looker, chains, most, [&](std::uint64_t said) {
    ++votes.all;
    if (said == base) ++votes.for_it;
  });
  return votes;
}

std::vector<Piece> find_places(const Looker& looker, const std::vector<Chain>& chains,
                               std::uint64_t base, std::uint64_t first) {
  std::vector<Piece> pieces;
  std::vector<std::uint64_t> open;
  std::int64_t shift = -static_cast<std::int64_t>(first);
  for (const Chain& chain : chains) {
    Shifter shifter(shift, chain.begin, looker.end());
    Piece piece = {chain.begin, chain.end, static_cast<std::int64_t>(chain.begin) + shift};
    const auto split = [&] {
      add_part(pieces, piece, piece.begin, shifter.split());
      piece.begin = shifter.split();
      piece.place = static_cast<std::int64_t>(piece.begin) + shifter.shift();
    };
    each_pair(looker, chain, open, [&](std::uint64_t begin, std::uint64_t reference) {
      const auto said = static_cast<std::int64_t>(reference - base - begin);
      if (shifter.hear(said, begin)) split();
    });
    if (chain.begin != first && shifter.end()) split();
    shift = shifter.shift();
    pieces.push_back(piece);
  }
  return pieces;
}

// Of two pieces that overlap, the one that stands first in the file is right.
Sorted sort_places(const Looker& looker, std::vector<Piece> pieces) {
  Sorted sorted;
  for (std::size_t each = 1; each < pieces.size(); ++each) {
    if (pieces[each].place < pieces[each - 1].place) ++sorted.moved;
  }
  std::stable_sort(pieces.begin(), pieces.end(),
                   [](const Piece& a, const Piece& b) { return a.place < b.place; });
  for (Piece piece : pieces) {
    if (piece.place < 0) {
      sorted.doubled.push_back(piece);
      continue;
    }
    if (!sorted.pieces.empty() && sorted.pieces.back().end_place() > piece.place) {
      Piece& last = sorted.pieces.back();
      if (piece.begin < last.begin) {
        const Piece kept = cut_before(looker, last, piece.place);
        add_part(sorted.doubled, last, kept.end, last.end);
        last = kept;
        if (last.begin == last.end) sorted.pieces.pop_back();
      } else {
        const Piece kept = cut_behind(looker, piece, last.end_place());
        add_part(sorted.doubled, piece, piece.begin, kept.begin);
        piece = kept;
      }
    }
    add_part(sorted.pieces, piece, piece.begin, piece.end);
  }
  return sorted;
}

}  // namespace CT::Salvage
