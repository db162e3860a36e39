// SPDX-License-Identifier: MIT
#include "table.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "measure.h"
#include "worst_cases.h"

namespace CT::Bench {

namespace {

namespace fs = std::filesystem;

constexpr double most_growth = 2.2;
// Below these, noise rules.
constexpr double least_seconds = 0.05;
constexpr double least_mebibytes = 32;
// How much is read of an output that is multiplied by definition, at n; at 2n twice as much.
constexpr std::uint64_t output_piece = std::uint64_t{128} << 20;

// A file of its own in the folder for temporary files.
class TemporaryFile {
 public:
  TemporaryFile()
      : path_(fs::temp_directory_path() / ("worst_case." + std::to_string(getpid()) + ".ct")) {}
  ~TemporaryFile() {
    std::error_code ignored;
    fs::remove(path_, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  void write(std::string_view name, std::size_t n) const {
    const Usage usage = run(
        {fs::read_symlink("/proc/self/exe"), "write", std::string(name), std::to_string(n), path_},
        {});
    if (usage.status != 0) throw std::runtime_error("cannot write " + path_.string());
  }
  [[nodiscard]] const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

class Table {
 public:
  Table(std::string tool, bool quick) : tool_(std::move(tool)), quick_(quick) {}

  void measure(const WorstCase& worst);
  void measure_sparse();
  [[nodiscard]] bool is_good() const { return good_; }

  static void print_head() {
    std::printf("%-23s %-2s %8s %8s  %7s %7s %5s  %7s %7s %5s  %s\n", "case", "", "MiB", "at 2n",
                "s", "at 2n", "ratio", "MiB", "at 2n", "ratio", "");
  }

 private:
  [[nodiscard]] Usage best_run(char output, std::uint64_t most) const;
  void print(const WorstCase& worst, char output, const Usage& once, const Usage& twice);

  std::string tool_;
  bool quick_;
  bool good_ = true;
  TemporaryFile file_;
  double file_sizes_[2] = {};
};

// The fastest of three; one that takes seconds has little noise to get rid of.
Usage Table::best_run(char output, std::uint64_t most) const {
  Limits limits;
  limits.output = most;
  Usage best;
  for (int i = 0; i != (quick_ ? 2 : 3); ++i) {
    const Usage usage = run({tool_, std::string("-") + output, file_.path()}, limits);
    if (i == 0 || usage.seconds < best.seconds) best = usage;
    if (best.seconds > 1.5 || !best.failure.empty()) break;
  }
  const bool ended_early = most != 0 && best.output == most;
  if (best.failure.empty() && best.status != 0 && !ended_early) {
    best.failure = "status " + std::to_string(best.status);
  }
  return best;
}

void Table::measure(const WorstCase& worst) {
  constexpr std::string_view outputs = "STJDB";
  std::vector<Usage> usages[2];
  for (const std::size_t half : {std::size_t{0}, std::size_t{1}}) {
    const std::size_t n = worst.n / (quick_ ? 4 : 1) * (half + 1);
    file_.write(worst.name, n);
    file_sizes_[half] = static_cast<double>(fs::file_size(file_.path())) / (1 << 20);
    for (const char output : outputs) {
      const bool multiplied = worst.multiplied.find(output) != std::string_view::npos;
      const std::uint64_t piece = output_piece / (quick_ ? 4 : 1) * (half + 1);
      usages[half].push_back(best_run(output, multiplied ? piece : 0));
    }
  }
  for (std::size_t i = 0; i != outputs.size(); ++i) {
    print(worst, outputs[i], usages[0][i], usages[1][i]);
  }
}

void Table::print(const WorstCase& worst, char output, const Usage& once, const Usage& twice) {
  const double time_ratio = twice.seconds / std::max(once.seconds, 0.001);
  const double memory_ratio = twice.mebibytes / std::max(once.mebibytes, 1.0);
  std::string notes;
  if (twice.output != 0) {
    char text[64];
    std::snprintf(text, sizeof text, "%.2f ns a byte",
                  1e9 * twice.seconds / static_cast<double>(twice.output));
    notes = text;
  }
  std::string faults = once.failure.empty() ? twice.failure : once.failure;
  if (twice.seconds > least_seconds && time_ratio > most_growth) faults += " TIME";
  if (twice.mebibytes > least_mebibytes && memory_ratio > most_growth) faults += " MEMORY";
  if (!faults.empty()) good_ = false;
  std::printf("%-23s -%c %8.1f %8.1f  %7.3f %7.3f %5.2f  %7.1f %7.1f %5.2f  %s%s%s\n",
              worst.name.data(), output, file_sizes_[0], file_sizes_[1], once.seconds,
              twice.seconds, time_ratio, once.mebibytes, twice.mebibytes, memory_ratio,
              notes.c_str(), faults.empty() ? "" : " !!", faults.c_str());
  std::fflush(stdout);
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
    file_.write(one.name, one.n);
    Limits limits;
    limits.memory = one.memory;
    const fs::path errors = file_.path().string() + ".errors";
    const Usage usage = run({tool_, one.option, file_.path()}, limits, errors.c_str());
    std::string said;
    std::getline(std::ifstream(errors), said);
    fs::remove(errors);
    const double size = static_cast<double>(fs::file_size(file_.path())) / (1 << 20);
    std::printf("%-14s %10.0f %-6s  %12.0f %7.3f %8.1f  status %d %s%s\n", one.name, size,
                one.option.c_str(), static_cast<double>(one.memory) / (1 << 20), usage.seconds,
                usage.mebibytes, usage.status, usage.failure.c_str(), said.c_str());
    std::fflush(stdout);
    if (!usage.failure.empty()) good_ = false;
  }
}

}  // namespace

int run_table(const std::string& tool, bool quick, const std::vector<std::string>& names) {
  Table table(tool, quick);
  Table::print_head();
  const auto is_chosen = [&](std::string_view name) {
    return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
  };
  for (const WorstCase& worst : worst_cases()) {
    if (is_chosen(worst.name)) table.measure(worst);
  }
  if (is_chosen("sparse")) table.measure_sparse();
  return table.is_good() ? 0 : 1;
}

}  // namespace CT::Bench
