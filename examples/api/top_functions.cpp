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

int main(int argc, char** argv) {
  if (argc != 2) return usage("top_functions TRACE");
  const CT::Trace trace = open_trace(argv[1]);

  std::vector<Row> rows;
  for (const Figures& figures : profile(trace)) {
    rows.push_back({&trace.functions()[rows.size()], figures});
  }
  std::ranges::stable_sort(
      rows, [](const Row& a, const Row& b) { return a.figures.own_ms > b.figures.own_ms; });
  if (rows.size() > 10) rows.resize(10);

  fmt::print("    own ms   calls  function\n");
  for (const auto& [function, figures] : rows) {
    fmt::print("{:10.3f}  {:6}  {}", figures.own_ms, figures.calls, name_of(*function));
    if (function->is_user()) {
      fmt::print("  {}:{}", function->filename().to_string().toStdString(), function->line_no());
    }
    fmt::print("\n");
  }
  return 0;
}
