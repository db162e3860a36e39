// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_selection.h"

#include "ctsalvage/ct_judge.h"

namespace CT::Salvage {

namespace {

using Checkpoint::Role;

// The checkpoints of all pieces, by their number in the order of places. Of begin and end of the
// request the ones are taken that leave most between them.
struct Bounds {
  static constexpr std::uint64_t none = all_values;

  std::uint64_t startup = none;
  std::uint64_t shutdown = none;
  std::uint64_t count = 0;

  void see(const Frame& frame) {
    if (startup == none && frame.role() == Role::root && frame.size > frame.common_size()) {
      startup = count;
    }
    const bool is_exact = frame.size == frame.common_size();
    if (frame.role() == Role::root_end && is_exact) shutdown = count;
    ++count;
  }
  void decide() {
    if (startup != none && startup > count - startup) startup = none;
    if (shutdown != none && count - shutdown > shutdown + 1) shutdown = none;
    if (startup != none && shutdown != none && shutdown < startup) shutdown = none;
  }
};

class Selector {
 public:
  Selector(const unsigned char* file, Order order, Names& names, Report& report)
      : file_(file), order_(order), names_(names), report_(report) {}

  Selection run(const std::vector<Piece>& pieces) {
    each(pieces, [&](const Piece&, const Frame& frame, std::uint64_t) { bounds_.see(frame); });
    bounds_.decide();
    std::uint64_t number = 0;
    each(pieces, [&](const Piece& piece, const Frame& frame, std::uint64_t offset) {
      if (takes(frame, number++, offset)) keep(piece, frame, offset);
    });
    return std::move(selection_);
  }

 private:
  template <class Visit>
  void each(const std::vector<Piece>& pieces, Visit&& visit) {
    for (const Piece& piece : pieces) {
      each_checkpoint(file_, order_, piece.begin, piece.end,
                      [&](const Frame& frame, std::uint64_t offset) {
                        visit(piece, frame, offset);
                        return true;
                      });
    }
  }

  bool takes(const Frame& frame, std::uint64_t number, std::uint64_t offset) {
    const auto drop = [&](Change why) {
      report_.add(why, offset, frame.whole_size());
      return false;
    };
    if (bounds_.startup != Bounds::none && number < bounds_.startup) {
      return drop(Change::before_startup);
    }
    if (bounds_.shutdown != Bounds::none && number > bounds_.shutdown) {
      return drop(Change::behind_shutdown);
    }
    if (frame.role() == Role::root && number != bounds_.startup) {
      return drop(Change::startup_again);
    }
    if (frame.role() == Role::root_end && number != bounds_.shutdown) {
      return drop(Change::shutdown_early);
    }
    switch (judge(frame, order_, names_)) {
      case Judgement::unknown_type: return drop(Change::unknown_type);
      case Judgement::broken: return drop(Change::broken);
      default: return true;
    }
  }

  void keep(const Piece& piece, const Frame& frame, std::uint64_t offset) {
    const std::int64_t place = piece.place_of(offset);
    std::vector<Piece>& runs = selection_.runs;
    const std::uint64_t end = offset + frame.whole_size();
    if (frame.role() == Role::root) selection_.has_startup = true;
    if (!runs.empty() && runs.back().end == offset && runs.back().end_place() == place) {
      runs.back().end = end;
    } else {
      runs.push_back({offset, end, place});
    }
  }

  const unsigned char* file_;
  Order order_;
  Names& names_;
  Report& report_;
  Bounds bounds_;
  Selection selection_;
};

}  // namespace

Selection select(const unsigned char* file, Order order, const std::vector<Piece>& pieces,
                 Names& names, Report& report) {
  return Selector(file, order, names, report).run(pieces);
}

}  // namespace CT::Salvage
