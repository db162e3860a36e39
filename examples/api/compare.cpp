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
using Rows = std::map<QString, Row>;

void add(CT::Storage& storage, Rows& rows, Figures Row::*side) {
  const std::vector<Figures> functions = profile(storage);
  for (std::size_t i = 0; i != functions.size(); ++i) {
    Figures& sum = rows[storage.functions()[i]->full_name()].*side;
    sum.calls += functions[i].calls;
    sum.own_ms += functions[i].own_ms;
  }
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fmt::print(stderr, "Usage: compare OLD NEW\n");
    return 1;
  }
  const auto before = open_trace(argv[1]);
  const auto after = open_trace(argv[2]);
  if (before == nullptr || after == nullptr) return 1;

  Rows rows;
  add(before->storage, rows, &Row::before);
  add(after->storage, rows, &Row::after);
  std::vector<std::pair<QString, Row>> sorted(rows.begin(), rows.end());
  std::ranges::stable_sort(sorted, [](const auto& a, const auto& b) {
    return std::abs(a.second.change()) > std::abs(b.second.change());
  });

  fmt::print("   own ms:                            calls:\n");
  fmt::print("    change        old        new     old    new  function\n");
  for (const auto& [name, row] : sorted) {
    fmt::print("{:+10.3f} {:10.3f} {:10.3f}  {:6} {:6}  {}\n", row.change(), row.before.own_ms,
               row.after.own_ms, row.before.calls, row.after.calls, name.toStdString());
  }
  return 0;
}
