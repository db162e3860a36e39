// SPDX-License-Identifier: MIT
#include "trial.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <unordered_map>

#include "codetrace/ct_trace.h"
#include "codetrace/tree/ct_diagnostics.h"
#include "ctsalvage/ct_salvage.h"

namespace CT::SalvageTest {

namespace {

std::uint64_t big(const Octets& bytes, std::uint64_t at, int size) {
  std::uint64_t value = 0;
  for (int each = 0; each != size; ++each) value = value << 8 | bytes[at++];
  return value;
}

std::uint64_t hash_of(const Octets& bytes, std::uint64_t from, std::uint64_t to,
                      std::uint64_t seed) {
  std::uint64_t hash = seed ^ 0xCBF29CE484222325;
  for (; from != to; ++from) hash = (hash ^ bytes[from]) * 0x100000001B3;
  return hash;
}

class Errors final : public FindingSink {
 public:
  void report(const Finding& finding) override {
    if (finding_info(finding.kind).level == 0) ++count_;
  }
  [[nodiscard]] std::uint64_t count() const { return count_; }

 private:
  std::uint64_t count_ = 0;
};

Octets joined(const Salvage::Salvaged& made) {
  Octets all;
  for (const Salvage::Bytes& part : made.parts()) all.insert(all.end(), part.begin(), part.end());
  return all;
}

// Of the marks from `first` on, how many are among `found` from `from` on.
double share_of(const std::vector<Mark>& marks, std::size_t first, const std::vector<Mark>& found,
                std::size_t from) {
  if (first >= marks.size()) return 1;
  std::unordered_map<std::uint64_t, std::int64_t> there;
  for (std::size_t each = from; each < found.size(); ++each) ++there[found[each].hash];
  std::size_t kept = 0;
  for (std::size_t each = first; each != marks.size(); ++each) {
    if (--there[marks[each].hash] >= 0) ++kept;
  }
  return static_cast<double>(kept) / static_cast<double>(marks.size() - first);
}

}  // namespace

Places places_of(const Octets& trace) {
  const std::uint64_t data_end = 36 + big(trace, 12, 4);
  return {36, data_end, trace.size()};
}

std::vector<Mark> marks_of(const Octets& trace) {
  std::vector<Mark> marks;
  const bool is_big = (trace[3] & 2) != 0;
  const std::uint64_t end = 36 + big(trace, 12, 4);
  for (std::uint64_t at = 36; at + 4 <= end;) {
    const unsigned char lead = trace[at];
    const std::uint64_t size = is_big ? big(trace, at + 1, 3)
                                      : std::uint64_t{trace[at + 1]} |
                                            std::uint64_t{trace[at + 2]} << 8 |
                                            std::uint64_t{trace[at + 3]} << 16;
    const bool has_time = (lead & (is_big ? 4 : 0x20)) != 0;
    const bool has_memory = (lead & (is_big ? 2 : 0x40)) != 0;
    const std::uint64_t fixed = (has_time ? 12U : 0U) + (has_memory ? 8U : 0U);
    const std::uint64_t next = at + 4 + size;
    marks.push_back({at, next, hash_of(trace, at, std::min(at + 4 + fixed, next), size)});
    at = next;
  }
  return marks;
}

Outcome try_salvage(const std::vector<Mark>& marks, const Damage& damage, const Octets& damaged) {
  Outcome outcome;
  const auto demand = [&](bool holds, const char* what) {
    if (!holds) outcome.failures.emplace_back(what);
  };
  const Octets made = joined(Salvage::salvage(damaged));
  Errors errors;
  Trace trace;
  demand(trace.open(made.data(), made.size(), &errors), "the result does not open");
  demand(errors.count() == 0, "the reader has errors to tell");
  const Salvage::Salvaged again = Salvage::salvage(made);
  demand(again.report.is_whole, "the result is not whole");
  demand(joined(again) == made, "salvaging the result changes it");

  const std::vector<Mark> found = marks_of(made);
  std::size_t before = 0;
  while (before != marks.size() && (damage.spares_data || marks[before].end <= damage.begin)) {
    ++before;
  }
  bool are_kept = found.size() >= before;
  for (std::size_t each = 0; are_kept && each != before; ++each) {
    are_kept = found[each].hash == marks[each].hash;
  }
  demand(are_kept, "a checkpoint before the damage is lost");
  outcome.kept = share_of(marks, 0, found, 0);
  if (damage.is_hole) {
    std::size_t behind = before;
    while (behind != marks.size() && marks[behind].offset < damage.end) ++behind;
    outcome.kept_behind = share_of(marks, behind, found, before);
    demand(outcome.kept_behind >= 0.95, "too many checkpoints behind the hole are lost");
  }
  return outcome;
}

}  // namespace CT::SalvageTest
