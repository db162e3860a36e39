// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_look.h"

namespace CT::Salvage {

namespace {

constexpr std::uint64_t most_values = 24;  // that a look goes through
constexpr std::uint32_t nanoseconds_of_a_second = 1'000'000'000;

// Sums up where the references of a checkpoint lead.
struct Signs {
  Order order;
  const std::optional<Range>& data;
  const std::optional<Range>& add_data;
  bool is_wrong = false;
  bool has_evidence = false;

  void operator()(Refers kind, const unsigned char* place) {
    const std::uint64_t reference = order.u64(place);
    const std::optional<Range>& range = kind == Refers::begin ? data : add_data;
    if (reference == 0) {
      if (kind == Refers::begin) is_wrong = true;
      return;
    }
    if (!range) return;
    if (range->has(reference)) {
      has_evidence = true;
    } else {
      is_wrong = true;
    }
  }
};

}  // namespace

Looker::Look Looker::at(std::uint64_t offset) const {
  Look look;
  if (offset > end_ || end_ - offset < Format::header_word_size) return look;
  const Frame frame = this->frame(offset);
  if (frame.whole_size() > end_ - offset) return look;
  look.next = offset + frame.whole_size();
  look.verdict = Verdict::frame;
  const Checkpoint::TypeInfo& info = frame.info();
  if (info.role == Checkpoint::Role::none) return look;
  if (frame.size < frame.common_size() || (frame.size == 0 && info.needs_payload)) return look;
  if ((frame.presence & 1) != 0 && order_.u32(frame.payload() + 8) >= nanoseconds_of_a_second) {
    return look;
  }
  Signs signs = {order_, data_, add_data_};
  PayloadWalk walk(frame, order_, most_values);
  if (!walk.run(signs) || signs.is_wrong || walk.has_unknown_values()) return look;
  // The size of a begin of a request is a sign by itself.
  look.has_evidence = signs.has_evidence ||
                      (info.role == Checkpoint::Role::root && frame.size > frame.common_size());
  if (walk.is_open()) {
    look.verdict = Verdict::open;
  } else if (frame.size == 0 || walk.is_exact()) {
    look.verdict = Verdict::perfect;
  }
  return look;
}

bool Looker::is_end_or_likely(std::uint64_t offset) const {
  return offset == end_ || at(offset).verdict >= Verdict::open;
}

bool Looker::begins(std::uint64_t offset) const {
  constexpr int enough = 4;
  Look look = at(offset);
  for (int count = 1; look.verdict >= Verdict::open; ++count) {
    if (look.verdict == Verdict::perfect && look.has_evidence) return true;
    if (count == enough || look.next == end_) return true;
    look = at(look.next);
  }
  return false;
}

bool Looker::follows(std::uint64_t offset, const Look& look) const {
  if (look.verdict == Verdict::perfect) return true;
  if (look.verdict == Verdict::none) return false;
  if (look.verdict == Verdict::open) return look.has_evidence || is_end_or_likely(look.next);
  return (look.next == end_ || begins(look.next)) && !has_begin(offset + 1, look.next);
}

// A size that is wrong may lead to a begin, too, over others. Where there is none, all of these
// bytes are done with, and else those before it are, so each is looked at twice at most.
bool Looker::has_begin(std::uint64_t from, std::uint64_t to) const {
  for (std::uint64_t at = from; at < to; ++at) {
    if (begins(at)) return true;
  }
  return false;
}

}  // namespace CT::Salvage
