// SPDX-License-Identifier: MIT
#include "worst_table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "measure.h"
#include "temporary_file.h"
#include "worst_cases.h"

namespace CT::Bench {

namespace {

namespace fs = std::filesystem;

constexpr double most_growth = 2.2;
// Below these, noise rules.
constexpr double least_seconds = 0.05;
constexpr double least_mebibytes = 32;
constexpr double bytes_per_mebibyte = 1 << 20;
// How much is read of an output that is multiplied by definition, at n; at 2n twice as much.
constexpr std::uint64_t output_piece = std::uint64_t{128} << 20;

// In a process of its own, so that this one stays small.
void write_case(std::string_view name, std::size_t n, const TemporaryFile& file) {
  const Usage usage = run({fs::read_symlink("/proc/self/exe"), "write", std::string(name),
                           std::to_string(n), file.path()},
                          {});
  if (usage.status != 0) throw std::runtime_error("cannot write " + file.path().string());
}

class Table {
 public:
  Table(std::string tool, bool quick)
      : tool_(std::move(tool)), quick_(quick), start_(seconds_to_start()) {}

  void measure(const WorstCase& worst);
  void print_ranked();
  void measure_sparse();
  // Returns whether there are none.
  [[nodiscard]] bool print_marked() const;

 private:
  // What a run cost at n and at 2n.
  struct Pair {
    Usage once;
    Usage twice;
    [[nodiscard]] double time_ratio() const {
      return twice.seconds / std::max(once.seconds, 0.001);
    }
    [[nodiscard]] bool is_too_slow() const {
      return twice.seconds > least_seconds && time_ratio() > most_growth;
    }
  };

  struct Row {
    std::string name;
    char output;
    double file_once;  // MiB
    double file_twice;
    Pair pair;
    double beyond_start;  // seconds at 2n, without what the tool takes for nothing
    std::string faults;

    [[nodiscard]] double memory_ratio() const {
      return pair.twice.mebibytes / std::max(pair.once.mebibytes, 1.0);
    }
    // Of the run at 2n, in nanoseconds.
    [[nodiscard]] double per_byte_read() const {
      return 1e9 * beyond_start / (file_twice * bytes_per_mebibyte);
    }
    [[nodiscard]] double per_byte() const {
      return 1e9 * beyond_start /
             (file_twice * bytes_per_mebibyte + static_cast<double>(pair.twice.output));
    }
    [[nodiscard]] bool is_noise() const { return pair.twice.seconds <= least_seconds; }
  };

  [[nodiscard]] double seconds_to_start() const;
  [[nodiscard]] Usage run_tool(const TemporaryFile& file, char output, std::uint64_t most) const;
  [[nodiscard]] Pair best_pair(char output, std::uint64_t most) const;
  void add(const WorstCase& worst, char output, const Pair& pair);
  void mark(const std::string& row, const std::string& faults);

  std::string tool_;
  bool quick_;
  double start_;
  std::vector<Row> rows_;
  std::vector<std::string> marked_;
  TemporaryFile once_{"worst_case.n.ct"};
  TemporaryFile twice_{"worst_case.2n.ct"};
};

double Table::seconds_to_start() const {
  double least = run({tool_, "-V"}, {}).seconds;
  for (int i = 0; i != 10; ++i) least = std::min(least, run({tool_, "-V"}, {}).seconds);
  return least;
}

Usage Table::run_tool(const TemporaryFile& file, char output, std::uint64_t most) const {
  Limits limits;
  limits.output = most;
  Usage usage = run({tool_, std::string("-") + output, file.path()}, limits);
  const bool ended_early = most != 0 && usage.output == most;
  if (usage.failure.empty() && usage.status != 0 && !ended_early) {
    usage.failure = "status " + std::to_string(usage.status);
  }
  return usage;
}

// The fastest of some runs at n and at 2n, in turn. Noise only ever adds, so a pair that looks too
// slow is measured more often; one that takes seconds has little noise to get rid of.
Table::Pair Table::best_pair(char output, std::uint64_t most) const {
  const int enough = quick_ ? 2 : 4;
  const int at_most = 4 * enough;
  Pair best;
  for (int i = 0; i != at_most && (i < enough || best.is_too_slow()); ++i) {
    const Usage once = run_tool(once_, output, most);
    const Usage twice = run_tool(twice_, output, 2 * most);
    if (i == 0 || once.seconds < best.once.seconds) best.once = once;
    if (i == 0 || twice.seconds < best.twice.seconds) best.twice = twice;
    const bool failed = !once.failure.empty() || !twice.failure.empty();
    if (failed) return {once, twice};
    if (best.once.seconds > 1 && !best.is_too_slow()) break;
  }
  return best;
}

void Table::measure(const WorstCase& worst) {
  const std::size_t share = quick_ ? 4 : 1;
  write_case(worst.name, worst.n / share, once_);
  write_case(worst.name, worst.n / share * 2, twice_);
  for (const char output : std::string_view("STJDB")) {
    const bool multiplied = worst.multiplied.find(output) != std::string_view::npos;
    add(worst, output, best_pair(output, multiplied ? output_piece / share : 0));
  }
}

void Table::mark(const std::string& row, const std::string& faults) {
  if (!faults.empty()) marked_.push_back(row + ": " + faults);
}

// The table comes when all is measured; until then somebody who waits sees what is going on.
void Table::add(const WorstCase& worst, char output, const Pair& pair) {
  const auto& [once, twice] = pair;
  Row row{std::string(worst.name),
          output,
          once_.mebibytes(),
          twice_.mebibytes(),
          pair,
          std::max(twice.seconds - start_, 0.0),
          {}};
  row.faults = once.failure.empty() ? twice.failure : once.failure;
  const auto add_fault = [&](const char* fault) {
    if (!row.faults.empty()) row.faults += ' ';
    row.faults += fault;
  };
  if (pair.is_too_slow()) add_fault("TIME");
  if (twice.mebibytes > least_mebibytes && row.memory_ratio() > most_growth) add_fault("MEMORY");
  mark(row.name + " -" + output, row.faults);
  std::fprintf(stderr, "%s -%c: %.3f s, %.3f s at 2n%s%s\n", row.name.c_str(), output, once.seconds,
               twice.seconds, row.faults.empty() ? "" : " !! ", row.faults.c_str());
  rows_.push_back(std::move(row));
}

void Table::print_ranked() {
  std::stable_sort(rows_.begin(), rows_.end(), [](const Row& a, const Row& b) {
    return std::pair(a.is_noise(), -a.per_byte()) < std::pair(b.is_noise(), -b.per_byte());
  });
  std::printf("%-23s %-2s %7s %7s  %8s %8s  %7s %7s %5s  %7s %7s %5s  %s\n", "case", "", "ns/all",
              "ns/in", "MiB", "at 2n", "s", "at 2n", "ratio", "MiB", "at 2n", "ratio", "");
  for (const Row& row : rows_) {
    const auto& [once, twice] = row.pair;
    std::printf("%-23s -%c %7.2f %7.2f  %8.1f %8.1f  %7.3f %7.3f %5.2f  %7.1f %7.1f %5.2f  %s%s\n",
                row.name.c_str(), row.output, row.per_byte(), row.per_byte_read(), row.file_once,
                row.file_twice, once.seconds, twice.seconds, row.pair.time_ratio(), once.mebibytes,
                twice.mebibytes, row.memory_ratio(), row.faults.empty() ? "" : "!! ",
                row.faults.c_str());
  }
  std::fflush(stdout);
}

bool Table::print_marked() const {
  if (marked_.empty()) {
    std::printf("\nno row is marked: status 0\n");
  } else {
    std::printf("\nmarked with !!, so the status is 1:\n");
    for (const std::string& row : marked_) std::printf("  %s\n", row.c_str());
  }
  return marked_.empty();
}

// Files that are far larger than anything that is written by hand; each is read once.
void Table::measure_sparse() {
  struct Sparse {
    const char* name;
    std::size_t n;
    std::string option;
    std::uint64_t memory;
  };
  constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30;
  const Sparse sparse[] = {
      {"sparse_data", gibibyte, "-S", 2 * gibibyte},
      {"sparse_data", gibibyte, "-T", 2 * gibibyte},
      {"sparse_both", 0xFFFFFFFF, "-S", 4 * gibibyte},
  };
  std::printf("\n%-14s %10s %-6s  %12s %7s %8s\n", "sparse file", "MiB", "", "allowed MiB", "s",
              "MiB");
  for (const Sparse& one : sparse) {
    write_case(one.name, one.n, once_);
    Limits limits;
    limits.memory = one.memory;
    const fs::path errors = once_.path().string() + ".errors";
    const Usage usage = run({tool_, one.option, once_.path()}, limits, errors.c_str());
    std::string said;
    std::getline(std::ifstream(errors), said);
    fs::remove(errors);
    std::printf("%-14s %10.0f %-6s  %12.0f %7.3f %8.1f  status %d %s%s\n", one.name,
                once_.mebibytes(), one.option.c_str(), static_cast<double>(one.memory) / (1 << 20),
                usage.seconds, usage.mebibytes, usage.status, usage.failure.c_str(), said.c_str());
    std::fflush(stdout);
    mark(std::string(one.name) + ' ' + one.option, usage.failure);
  }
}

}  // namespace

int run_table(const std::string& tool, bool quick, const std::vector<std::string>& names) {
  Table table(tool, quick);
  const auto is_chosen = [&](std::string_view name) {
    return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
  };
  for (const WorstCase& worst : worst_cases()) {
    if (is_chosen(worst.name)) table.measure(worst);
  }
  table.print_ranked();
  if (is_chosen("sparse")) table.measure_sparse();
  return table.print_marked() ? 0 : 1;
}

}  // namespace CT::Bench
