// SPDX-License-Identifier: MIT
//
// speed TOOL [--quick] [FILE...]   what decoding and each output cost a call, as tables in
// Markdown; FILEs
//                                  are traces of real programs. The helpers lie beside this
//                                  program.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "measure.h"
#include "temporary_file.h"

namespace CT::Bench {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t everything = UINT64_MAX;
constexpr double mebibyte = 1 << 20;

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Medians of several runs.
struct Cost {
  double seconds = 0;
  double mebibytes = 0;
};

class Speed {
 public:
  Speed(std::string tool, bool quick) : tool_(std::move(tool)), quick_(quick) {}

  void run(const std::vector<std::string>& real_traces);

 private:
  // What one output cost on one trace.
  struct Row {
    Cost tool;
    Cost floor;
    std::uint64_t output = 0;
  };

  [[nodiscard]] static std::string beside(const char* program) {
    return (fs::read_symlink("/proc/self/exe").parent_path() / program).string();
  }
  void make_trace(std::uint64_t calls) const;
  [[nodiscard]] Usage run_once(const std::vector<std::string>& command, const char* sink) const;
  [[nodiscard]] Row measure(const std::string& trace, char output, int runs,
                            const char* sink = "/dev/null") const;
  void print_outputs(const std::string& trace, std::uint64_t calls, int runs);
  void print_plain_qt(std::uint64_t calls);
  void print_growth();
  void print_sinks();
  void print_start_up() const;

  struct Growth {
    char output;
    std::uint64_t calls;
    double seconds;
  };

  std::string tool_;
  bool quick_;
  TemporaryFile file_{"speed.ct"};
  TemporaryFile output_{"speed.out"};
  std::string trace_ = file_.path().string();
  std::vector<Growth> growth_;
};

void Speed::make_trace(std::uint64_t calls) const {
  const Usage usage = Bench::run({beside("make_trace"), std::to_string(calls), trace_}, {});
  if (usage.status != 0) throw std::runtime_error("cannot write " + trace_);
}

Usage Speed::run_once(const std::vector<std::string>& command, const char* sink) const {
  Limits limits;
  limits.seconds = 300;
  if (sink == nullptr) {
    limits.output = everything;
  } else {
    limits.sink = sink;
  }
  Usage usage = Bench::run(command, limits);
  if (usage.status != 0) {
    throw std::runtime_error(command.front() + " " + command[1] + ": " + usage.failure);
  }
  return usage;
}

// Tool and floor in turn, so that both meet the same weather. A null sink is a pipe.
Speed::Row Speed::measure(const std::string& trace, char output, int runs, const char* sink) const {
  const std::vector<std::string> tool = {tool_, std::string("-") + output, trace};
  Row row;
  row.output = run_once(tool, nullptr).output;
  const std::vector<std::string> floor = {beside("floor"), trace, std::to_string(row.output)};
  std::vector<double> times[2];
  std::vector<double> sizes[2];
  for (int i = 0; i != runs; ++i) {
    for (const std::size_t which : {std::size_t{0}, std::size_t{1}}) {
      const Usage usage = run_once(which == 0 ? tool : floor, sink);
      times[which].push_back(usage.seconds);
      sizes[which].push_back(usage.mebibytes);
    }
  }
  row.tool = {median(times[0]), median(sizes[0])};
  row.floor = {median(times[1]), median(sizes[1])};
  return row;
}

// A trace of a real program, whose calls nobody counted, has no figures a call.
void Speed::print_outputs(const std::string& trace, std::uint64_t calls, int runs) {
  const auto size = static_cast<double>(fs::file_size(trace));
  std::printf(
      "| Output | s | MB/s in | MB/s out | floors | MiB | ns a call | bytes a call beside the file "
      "|\n"
      "|---|---|---|---|---|---|---|---|\n");
  const auto print_each = [&](double value) {
    calls != 0 ? std::printf(" %.0f |", value / static_cast<double>(calls)) : std::printf(" |");
  };
  for (const char output : std::string("STJDB")) {
    const Row row = measure(trace, output, runs);
    growth_.push_back({output, calls, row.tool.seconds});
    std::printf("| `-%c` | %.3f | %.0f | %.0f | %.2f | %.1f |", output, row.tool.seconds,
                size / 1e6 / row.tool.seconds,
                static_cast<double>(row.output) / 1e6 / row.tool.seconds,
                row.tool.seconds / std::max(row.floor.seconds, 1e-3), row.tool.mebibytes);
    print_each(1e9 * row.tool.seconds);
    print_each(row.tool.mebibytes * mebibyte - size);
    std::printf("\n");
    std::fflush(stdout);
  }
  std::printf("\n");
}

void Speed::print_plain_qt(std::uint64_t calls) {
  std::printf("### The plain Qt way, %.0e calls\n\n", static_cast<double>(calls));
  std::printf(
      "| Output | s | times the tool | MiB | bytes a call beside the file "
      "|\n|---|---|---|---|---|\n");
  const auto size = static_cast<double>(fs::file_size(trace_));
  for (const char output : std::string("STJD")) {
    const std::string option = std::string("-") + output;
    const Usage tool = run_once({tool_, option, trace_}, "/dev/null");
    const Usage plain = run_once({beside("plain_qt"), option, trace_}, "/dev/null");
    std::printf("| `-%c` | %.2f | %.1f | %.0f | %.0f |\n", output, plain.seconds,
                plain.seconds / tool.seconds, plain.mebibytes,
                (plain.mebibytes * mebibyte - size) / static_cast<double>(calls));
    std::fflush(stdout);
  }
  std::printf("\n");
}

// Time a call from the smallest to the largest trace, after the time of an empty one.
void Speed::print_growth() {
  std::printf(
      "## Growth\n\n| Output | ns a call at the smallest | at the largest | ratio "
      "|\n|---|---|---|---|\n");
  for (const char output : std::string("STJDB")) {
    std::vector<Growth> rows;
    std::copy_if(growth_.begin(), growth_.end(), std::back_inserter(rows),
                 [&](const Growth& row) { return row.output == output; });
    const auto a_call = [&](const Growth& row) {
      return 1e9 * (row.seconds - rows.front().seconds) / static_cast<double>(row.calls);
    };
    std::printf("| `-%c` | %.0f | %.0f | %.2f |\n", output, a_call(rows[1]), a_call(rows.back()),
                a_call(rows.back()) / a_call(rows[1]));
  }
  std::printf("\n");
}

void Speed::print_sinks() {
  std::printf("### Sinks\n\n| Output | `/dev/null` | file | pipe |\n|---|---|---|---|\n");
  for (const char output : std::string("TJD")) {
    std::printf("| `-%c` |", output);
    for (const char* sink :
         {"/dev/null", output_.path().c_str(), static_cast<const char*>(nullptr)}) {
      const Row row = measure(trace_, output, 3, sink);
      std::printf(" %.3f s, %.2f floors |", row.tool.seconds, row.tool.seconds / row.floor.seconds);
      std::fflush(stdout);
    }
    std::printf("\n");
  }
  std::printf("\n");
}

// Paired runs of the tool and of an empty program that links the same libraries.
void Speed::print_start_up() const {
  std::printf("## Start-up\n\n| Program | ms | times the empty program |\n|---|---|---|\n");
  const std::vector<std::vector<std::string>> commands = {{beside("empty_with_libraries")},
                                                          {beside("empty_without_libraries")},
                                                          {tool_, "-h"},
                                                          {tool_, trace_}};
  const char* const names[] = {"empty, with the same libraries", "empty, without them",
                               "`codetrace -h`", "`codetrace` on the trace of no calls"};
  std::vector<std::vector<double>> times(commands.size());
  for (int i = 0; i != 100; ++i) {
    for (std::size_t which = 0; which != commands.size(); ++which) {
      times[which].push_back(Bench::run(commands[which], {}).seconds);
    }
  }
  for (std::size_t which = 0; which != commands.size(); ++which) {
    const double time = median(times[which]);
    std::printf("| %s | %.2f | %.2f |\n", names[which], 1e3 * time, time / median(times[0]));
  }
  std::printf("\n");
}

void Speed::run(const std::vector<std::string>& real_traces) {
  std::vector<std::uint64_t> sizes = {0, 100'000, 1'000'000, 10'000'000};
  if (quick_) sizes.pop_back();
  for (const std::uint64_t calls : sizes) {
    make_trace(calls);
    if (calls == 0) print_start_up();
    std::printf("## %.0e calls, %.1f MB\n\n", static_cast<double>(calls),
                static_cast<double>(fs::file_size(trace_)) / 1e6);
    print_outputs(trace_, calls, calls > 1'000'000 ? 3 : 7);
    if (calls == 100'000 || calls == 1'000'000) print_plain_qt(calls);
    if (calls == 1'000'000) print_sinks();
  }
  print_growth();
  for (const std::string& trace : real_traces) {
    std::printf("## %s, %.1f MB\n\n", fs::path(trace).filename().c_str(),
                static_cast<double>(fs::file_size(trace)) / 1e6);
    growth_.clear();
    print_outputs(trace, 0, 5);
  }
}

}  // namespace
}  // namespace CT::Bench

int main(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  const bool quick = words.size() > 1 && words[1] == "--quick";
  if (words.empty()) {
    std::fprintf(stderr, "%s TOOL [--quick] [FILE...]\n", argv[0]);
    return 2;
  }
  try {
    const std::string tool = words.front();
    words.erase(words.begin(), words.begin() + (quick ? 2 : 1));
    CT::Bench::Speed(tool, quick).run(words);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
