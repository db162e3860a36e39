// SPDX-License-Identifier: MIT
//
// compare OLD NEW: the functions of two traces with their own time and calls in both; those whose
// time changed most come first.
#include <algorithm>
#include <cmath>
#include <map>

#include "profile.h"
#include "trace.h"

struct Row {
  Figures before;
  Figures after;

  double change() const { return after.own_ms - before.own_ms; }
};

// Functions of two traces are the same if their names are, so closures count as one.
using Rows = std::map<std::string, Row>;

void add(const CT::Trace& trace, Rows& rows, Figures Row::*side) {
  const std::vector<Figures> functions = profile(trace);
  for (std::size_t i = 0; i != functions.size(); ++i) {
    Figures& sum = rows[name_of(trace.functions()[i])].*side;
    sum.calls += functions[i].calls;
    sum.own_ms += functions[i].own_ms;
  }
}

int main(int argc, char** argv) {
  if (argc != 3) return usage("compare OLD NEW");
  Rows rows;
  add(open_trace(argv[1]), rows, &Row::before);
  add(open_trace(argv[2]), rows, &Row::after);
  std::vector<std::pair<std::string, Row>> sorted(rows.begin(), rows.end());
  std::ranges::stable_sort(sorted, [](const auto& a, const auto& b) {
    return std::abs(a.second.change()) > std::abs(b.second.change());
  });

  fmt::print("   own ms:                            calls:\n");
  fmt::print("    change        old        new     old    new  function\n");
  for (const auto& [name, row] : sorted) {
    fmt::print("{:+10.3f} {:10.3f} {:10.3f}  {:6} {:6}  {}\n", row.change(), row.before.own_ms,
               row.after.own_ms, row.before.calls, row.after.calls, name);
  }
  return 0;
}
