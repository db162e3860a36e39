// SPDX-License-Identifier: MIT
//
// What mending a trace came to: what was worked out where the file did not say it, and each change,
// with its place in the file. All changes are counted; of each kind the first are kept.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace CT::Salvage {

// Kinds of changes. The row of each in `change_infos` says what it is.
enum class Change : std::uint8_t {
  unreadable,
  doubled,
  unknown_type,
  broken,
  before_startup,
  startup_again,
  shutdown_early,
  behind_shutdown,
  end_again,
  end_astray,
  too_large,
  behind_trace,
  value_replaced,
  end_led_back,
  block_moved,
  startup_invented,
  begin_invented,
  name_invented,
  section_missing,
};

// What became of what a change is about.
enum class Outcome : std::uint8_t { dropped, repaired, invented, missing };

struct ChangeInfo {
  Change change;
  Outcome outcome;
  std::string_view code;  // in JSON
  std::string_view text;  // for people
};

// clang-format off
inline constexpr std::array change_infos = {
    ChangeInfo{Change::unreadable, Outcome::dropped, "unreadable", "bytes that are no checkpoints"},
    ChangeInfo{Change::doubled, Outcome::dropped, "doubled", "checkpoints that are there already"},
    ChangeInfo{Change::unknown_type, Outcome::dropped, "unknown-type", "checkpoint of a type that there is not"},
    ChangeInfo{Change::broken, Outcome::dropped, "broken", "checkpoint that has lost what places it"},
    ChangeInfo{Change::before_startup, Outcome::dropped, "before-startup", "checkpoints before the begin of the request"},
    ChangeInfo{Change::startup_again, Outcome::dropped, "startup-again", "begin of a request inside of another"},
    ChangeInfo{Change::shutdown_early, Outcome::dropped, "shutdown-early", "end of the request that is not its last checkpoint"},
    ChangeInfo{Change::behind_shutdown, Outcome::dropped, "behind-shutdown", "checkpoints behind the end of the request"},
    ChangeInfo{Change::end_again, Outcome::dropped, "end-again", "end of what has ended already"},
    ChangeInfo{Change::end_astray, Outcome::dropped, "end-astray", "end that leads to no begin"},
    ChangeInfo{Change::too_large, Outcome::dropped, "too-large", "checkpoints that DATA has no room for"},
    ChangeInfo{Change::behind_trace, Outcome::dropped, "behind-trace", "bytes behind the end of the trace"},
    ChangeInfo{Change::value_replaced, Outcome::repaired, "value-replaced", "checkpoint of which a value or text is lost"},
    ChangeInfo{Change::end_led_back, Outcome::repaired, "end-led-back", "end that led astray, now of the call it closes by its place"},
    ChangeInfo{Change::block_moved, Outcome::repaired, "block-moved", "checkpoints that stood in another place"},
    ChangeInfo{Change::startup_invented, Outcome::invented, "startup-invented", "begin of the request"},
    ChangeInfo{Change::begin_invented, Outcome::invented, "begin-invented", "begin of what ends here"},
    ChangeInfo{Change::name_invented, Outcome::invented, "name-invented", "names of what ADD DATA has lost"},
    ChangeInfo{Change::section_missing, Outcome::missing, "section-missing", "bytes that the header promises"},
};
// clang-format on

inline constexpr std::size_t change_count = change_infos.size();
constexpr const ChangeInfo& change_info(Change change) {
  return change_infos[static_cast<std::size_t>(change)];
}

static_assert([] {
  for (std::size_t row = 0; row != change_infos.size(); ++row) {
    if (change_infos[row].change != static_cast<Change>(row)) return false;
  }
  return true;
}());

// How far something can be relied on that the file does not say.
enum class Sure : std::uint8_t { certain, likely, guess };

// What the header of the new trace says, and why.
struct Fact {
  std::string_view name;  // in JSON
  std::string value;
  bool is_from_header = true;  // else worked out from the content
  Sure sure = Sure::certain;
};

class Report {
 public:
  struct Event {
    Change change;
    std::uint64_t offset;  // in the file that has it
    std::uint64_t bytes;
    std::uint64_t count;  // checkpoints, or names
  };
  struct Sum {
    std::uint64_t places = 0;
    std::uint64_t count = 0;
    std::uint64_t bytes = 0;
  };
  // So many events of a kind are kept.
  static constexpr std::uint64_t most_events = 100;

  void add(Change change, std::uint64_t offset, std::uint64_t bytes, std::uint64_t count = 1) {
    Sum& sum = sums_[static_cast<std::size_t>(change)];
    ++sum.places;
    sum.count += count;
    sum.bytes += bytes;
    if (sum.places <= most_events) events_.push_back({change, offset, bytes, count});
  }

  [[nodiscard]] const Sum& sum(Change change) const {
    return sums_[static_cast<std::size_t>(change)];
  }
  [[nodiscard]] std::uint64_t count(Outcome outcome) const {
    std::uint64_t total = 0;
    for (const ChangeInfo& info : change_infos) {
      if (info.outcome == outcome) total += sum(info.change).count;
    }
    return total;
  }
  // In the order in which they were found.
  [[nodiscard]] const std::vector<Event>& events() const { return events_; }

  bool is_whole = false;   // nothing had to be done: the trace is as it was
  bool has_header = true;  // the file began with one
  std::uint64_t kept = 0;  // checkpoints of the file that are in the new trace, repaired or not
  std::vector<Fact> facts;

 private:
  std::array<Sum, change_count> sums_ = {};
  std::vector<Event> events_;
};

}  // namespace CT::Salvage
