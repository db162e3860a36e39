// SPDX-License-Identifier: MIT
//
// top_functions TRACE: the ten functions that took the most time by themselves, with their calls.
#include <algorithm>

#include "profile.h"
#include "trace.h"

struct Row {
  const CT::Checkpoint::Function* function;
  Figures figures;
};

// The storage lists every function once, and the figures are in the same order.
std::vector<Row> rows_of(CT::Storage& storage) {
  const std::vector<Figures> figures = profile(storage);
  std::vector<Row> rows;
  for (std::size_t i = 0; i != figures.size(); ++i) {
    rows.push_back({storage.functions()[i].get(), figures[i]});
  }
  return rows;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "Usage: top_functions TRACE\n");
    return 1;
  }
  const auto trace = open_trace(argv[1]);
  if (trace == nullptr) return 1;

  std::vector<Row> rows = rows_of(trace->storage);
  std::ranges::stable_sort(
      rows, [](const Row& a, const Row& b) { return a.figures.own_ms > b.figures.own_ms; });
  if (rows.size() > 10) rows.resize(10);

  fmt::print("    own ms   calls  function\n");
  for (const auto& [function, figures] : rows) {
    fmt::print("{:10.3f}  {:6}  {}", figures.own_ms, figures.calls,
               function->full_name().toStdString());
    if (function->is_user()) {
      fmt::print("  {}:{}", function->filename().to_string().toStdString(), function->line_no());
    }
    fmt::print("\n");
  }
  return 0;
}
