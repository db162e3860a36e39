// SPDX-License-Identifier: MIT
//
// A flat table with linear probing, of which at least half is empty. A slot is eight bytes: a part
// of the hash, and the only call so far or the place of its repeat. Records are compared where that
// part is equal. The hash is seeded for each process, so no file can choose what collides.
#include "ctmeasure/ct_repeats.h"

#include <QHashFunctions>
#include <algorithm>
#include <array>
#include <cassert>
#include <string_view>
#include <utility>

#include "codetrace/bytes/ct_plain_array.h"
#include "ctmeasure/ct_elapsed.h"

namespace CT {

namespace {

class RepeatTable {
 public:
  RepeatTable(const Trace& trace, const Measures& measures) : trace_(trace), measures_(measures) {
    for (std::size_t i = 0; i != first_size; ++i) slots_.push_back({});
  }

  void add(NodeId id) {
    if (2 * (used_ + 1) > slots_.size()) grow();
    const std::uint32_t hash = hash_of(id);
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].is_used() && (slots_[at].hash != hash || !is_equal(slots_[at], id))) {
      at = (at + 1) & mask;
    }
    Slot& slot = slots_[at];
    if (!slot.is_used()) {
      slot = {hash, id + 1};
      ++used_;
      return;
    }
    if (!slot.is_repeat()) slot.content = -begin_repeat(slot.first_call());
    Repeat& repeat = found_[slot.repeat()];
    ++repeat.calls;
    repeat.total_ns = bounded_sum(repeat.total_ns, measures_[id].total_ns);
  }

  std::vector<Repeat> take() { return std::move(found_); }

 private:
  static constexpr std::size_t first_size = 1024;

  struct Slot {
    std::uint32_t hash = 0;
    std::int32_t content = 0;  // a call's number + 1; less than 0: that of a repeat, so negated

    [[nodiscard]] bool is_used() const { return content != 0; }
    [[nodiscard]] bool is_repeat() const { return content < 0; }
    [[nodiscard]] NodeId first_call() const { return content - 1; }
    [[nodiscard]] std::size_t repeat() const { return static_cast<std::size_t>(-(content + 1)); }
  };

  std::int32_t begin_repeat(NodeId first) {
    const Measure& call = measures_[first];
    found_.push_back({call.function, first, 1, call.total_ns});
    return static_cast<std::int32_t>(found_.size());
  }

  // The object and the arguments as they are stored; the kind of record says which of them come.
  [[nodiscard]] std::string_view said_to(NodeId id) const {
    const Checkpoint::FunctionCall call = record(id);
    const Cursor values = call.this_values().at;
    return {Section::as_chars(values.position()), values.left()};
  }

  [[nodiscard]] Checkpoint::FunctionCall record(NodeId id) const {
    const auto view = CheckpointView::at(trace_.file(), trace_.begin_offset(id));
    return Checkpoint::FunctionCall(Checkpoint::Base(view, trace_.storage().entities()));
  }

  [[nodiscard]] std::uint32_t hash_of(NodeId id) const {
    constexpr std::uint64_t odd = 0x9E37'79B9'7F4A'7C15;  // 2^64 over the golden ratio
    const std::string_view said = said_to(id);
    const auto function = static_cast<std::uint64_t>(measures_[id].function);
    const std::uint64_t hash =
        (::qHashBits(said.data(), said.size(), seed_) ^ function * odd) * odd;
    return static_cast<std::uint32_t>(hash >> 32);
  }

  [[nodiscard]] bool is_equal(const Slot& slot, NodeId id) const {
    const NodeId other = slot.is_repeat() ? found_[slot.repeat()].first : slot.first_call();
    return measures_[other].function == measures_[id].function &&
           trace_.type(other) == trace_.type(id) && said_to(other) == said_to(id);
  }

  // In place, so that there is never a second table. Whoever stands at the front may belong to the
  // back of the old table, and is put in last; all others move to no later slot than theirs, or to
  // the new half.
  void grow() {
    const std::size_t old_size = slots_.size();
    do slots_.push_back({});
    while (slots_.size() != 2 * old_size);
    std::size_t at = 0;
    std::vector<Slot> front;
    for (; at != old_size && slots_[at].is_used(); ++at) front.push_back(take_out(at));
    for (; at != old_size; ++at) {
      if (slots_[at].is_used()) put_in(take_out(at));
    }
    for (const Slot& slot : front) put_in(slot);
  }

  Slot take_out(std::size_t at) { return std::exchange(slots_[at], Slot()); }

  void put_in(const Slot& slot) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = slot.hash & mask;
    while (slots_[at].is_used()) at = (at + 1) & mask;
    slots_[at] = slot;
  }

  const Trace& trace_;
  const Measures& measures_;
  PlainArray<Slot> slots_;  // as many as a power of two
  std::size_t used_ = 0;
  std::vector<Repeat> found_;
  std::size_t seed_ = QHashSeed::globalSeed();
};

// Calls of different functions are never equal, so each part of the functions has a table of its
// own, after the one before it is gone: that takes a part of the memory.
constexpr std::uint8_t part_count = 8;

// Parts with about as many calls each: a function goes to the one that has fewest so far.
std::vector<std::uint8_t> parts_of_functions(const Trace& trace, const Measures& measures) {
  std::vector<std::int32_t> calls(trace.functions().size());
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const std::int32_t function = measures[id].function;
    if (function >= 0) ++calls[static_cast<std::size_t>(function)];
  }
  std::array<std::int64_t, part_count> sums{};
  std::vector<std::uint8_t> parts;
  for (const std::int32_t count : calls) {
    auto* const least = std::min_element(sums.begin(), sums.end());
    *least += count;
    parts.push_back(static_cast<std::uint8_t>(least - sums.begin()));
  }
  return parts;
}

}  // namespace

std::vector<Repeat> repeats(const Trace& trace, const Measures& measures) {
  const std::vector<std::uint8_t> parts = parts_of_functions(trace, measures);
  std::vector<Repeat> found;
  for (std::uint8_t part = 0; part != part_count; ++part) {
    RepeatTable table(trace, measures);
    for (NodeId id = 0; id != measures.node_count(); ++id) {
      const std::int32_t function = measures[id].function;
      if (function >= 0 && parts[static_cast<std::size_t>(function)] == part) table.add(id);
    }
    const std::vector<Repeat> of_part = table.take();
    found.insert(found.end(), of_part.begin(), of_part.end());
  }
  std::sort(found.begin(), found.end(),
            [](const Repeat& a, const Repeat& b) { return a.first < b.first; });
  return found;
}

}  // namespace CT
