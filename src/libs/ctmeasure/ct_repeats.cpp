// SPDX-License-Identifier: MIT
//
// A flat table with linear probing, of which at least half is empty. A slot is eight bytes: the
// hash, and the only call so far or the place of its repeat. Records are compared where hashes are
// equal. The hash is seeded for each process, so no file can choose what collides.
#include "ctmeasure/ct_repeats.h"

#include <QHashFunctions>
#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <numeric>
#include <span>
#include <string_view>
#include <tuple>
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

  void add(NodeId id, std::uint32_t hash) {
    if (2 * (used_ + 1) > slots_.size()) grow();
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
    repeat.slowest_ns = std::max(repeat.slowest_ns, measures_[id].total_ns);
    if (repeat.results != Results::differ) {
      repeat.results = together(repeat.results, result_of(repeat.first), result_of(id));
    }
  }

  std::vector<Repeat> take() { return std::move(found_); }

  // Of a call.
  [[nodiscard]] std::uint32_t hash_of(NodeId id) const {
    constexpr std::uint64_t odd = 0x9E37'79B9'7F4A'7C15;  // 2^64 over the golden ratio
    const std::string_view said = said_to(id);
    const auto function = static_cast<std::uint64_t>(measures_[id].function);
    const std::uint64_t hash =
        (::qHashBits(said.data(), said.size(), seed_) ^ function * odd) * odd;
    return static_cast<std::uint32_t>(hash >> 32);
  }

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
    found_.push_back(
        {call.function, first, 1, result_of(first).kind, call.total_ns, call.total_ns});
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

  struct Result {
    Results kind = Results::unknown;  // by itself
    Checkpoint::Type end = Checkpoint::Type::INVALID;
    std::string_view stored;
  };

  [[nodiscard]] Result result_of(NodeId id) const {
    const std::uint32_t offset = trace_.end_offset(id);
    if (offset == Storage::no_end) return {};
    const auto view = CheckpointView::at(trace_.file(), offset);
    const Checkpoint::Base record(view, trace_.storage().entities());
    const Checkpoint::ValueCursor value = Checkpoint::EndWithValue(record).values();
    if (value.at.left() == 0) return {};
    const bool threw = record.type() == Checkpoint::Type::FUNCTION_EXCEPTION;
    if (!threw && record.type() != Checkpoint::Type::FUNCTION_RETURN) return {};
    return {threw ? Results::same : kind_of_result(value.next_type()),
            record.type(),
            {Section::as_chars(value.at.position()), value.at.left()}};
  }

  static Results kind_of_result(Checkpoint::ValueType type) {
    switch (type) {
      case Checkpoint::ValueType::undef:
      case Checkpoint::ValueType::null: return Results::none;
      case Checkpoint::ValueType::object:
      case Checkpoint::ValueType::resource: return Results::handle;
      default: return Results::same;
    }
  }

  // Of the calls so far, of which `first` is one, and one more.
  static Results together(Results so_far, const Result& first, const Result& more) {
    if (first.kind == Results::unknown || more.kind == Results::unknown) return Results::unknown;
    const bool is_none = first.kind == Results::none && more.kind == Results::none;
    const bool is_same = is_none || (first.end == more.end && first.stored == more.stored);
    return is_same ? so_far : Results::differ;
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

auto rank_of(const Repeat& repeat) {
  return std::tuple(repeat.results == Results::differ, -repeat.spare_ns(), repeat.first);
}

constexpr std::uint32_t no_call = 0;
constexpr std::size_t ahead = 16;

// One for each node, so that the records are read once, in the order of the file.
PlainArray<std::uint32_t> hashes_of_calls(const Trace& trace, const Measures& measures) {
  const RepeatTable table(trace, measures);
  PlainArray<std::uint32_t> hashes;
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    hashes.push_back(measures[id].function < 0 ? no_call
                                               : std::max(table.hash_of(id), no_call + 1));
  }
  return hashes;
}

// The calls in parts by the upper bits of their hashes, and in the order of the file within a part.
// Calls of different parts are never equal, so each part has a table of its own, after the one
// before it is gone: small enough for a cache.
class Parts {
 public:
  Parts(const PlainArray<std::uint32_t>& hashes, std::size_t calls)
      : shift_(hash_bits - static_cast<int>(std::bit_width(calls / calls_each))),
        begins_((std::size_t{1} << (hash_bits - shift_)) + 1),
        calls_(calls) {
    for (const std::uint32_t hash : hashes) {
      if (hash != no_call) ++begins_[part_of(hash) + 1];
    }
    std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
    std::vector<std::size_t> ends = begins_;
    for (NodeId id = 0; id != static_cast<NodeId>(hashes.size()); ++id) {
      const std::uint32_t hash = hashes[static_cast<std::size_t>(id)];
      if (hash != no_call) calls_[ends[part_of(hash)]++] = id;
    }
  }

  [[nodiscard]] std::size_t size() const { return begins_.size() - 1; }
  [[nodiscard]] std::span<const NodeId> operator[](std::size_t part) const {
    return std::span(calls_).subspan(begins_[part], begins_[part + 1] - begins_[part]);
  }

 private:
  static constexpr int hash_bits = 32;
  static constexpr std::size_t calls_each = 16'384;

  [[nodiscard]] std::size_t part_of(std::uint32_t hash) const {
    return static_cast<std::size_t>(std::uint64_t{hash} >> shift_);
  }

  int shift_;
  std::vector<std::size_t> begins_;  // of the parts, and the end of the last
  std::vector<NodeId> calls_;
};

}  // namespace

std::vector<Repeat> repeats(const Trace& trace, const Measures& measures) {
  const PlainArray<std::uint32_t> hashes = hashes_of_calls(trace, measures);
  const auto others = std::count(hashes.begin(), hashes.end(), no_call);
  const Parts parts(hashes, hashes.size() - static_cast<std::size_t>(others));
  std::vector<Repeat> found;
  for (std::size_t part = 0; part != parts.size(); ++part) {
    RepeatTable table(trace, measures);
    const std::span<const NodeId> calls = parts[part];
    for (std::size_t i = 0; i != calls.size(); ++i) {
      // What a call needs is in no cache; it is on its way while others are added.
      if (i + ahead < calls.size()) __builtin_prefetch(&measures[calls[i + ahead]]);
      table.add(calls[i], hashes[static_cast<std::size_t>(calls[i])]);
    }
    const std::vector<Repeat> of_part = table.take();
    found.insert(found.end(), of_part.begin(), of_part.end());
  }
  std::sort(found.begin(), found.end(),
            [](const Repeat& a, const Repeat& b) { return rank_of(a) < rank_of(b); });
  return found;
}

std::string_view word_of(Results results) {
  constexpr std::array<std::string_view, 5> words = {"same", "handle", "none", "unknown", "differ"};
  return words[static_cast<std::size_t>(results)];
}

}  // namespace CT
