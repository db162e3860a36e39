// SPDX-License-Identifier: MIT
//
// questions TOOL CTTOOL [--quick]   what the companion's answers cost, against what the reader
//                                   costs on the same trace, as tables in Markdown. Status 1 if
//                                   one costs more than it may. make_trace lies beside this
//                                   program.
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

constexpr double mebibyte = 1 << 20;

// One question, and how many times the time of one of the reader's outputs it may take. Exports go
// to standard output, but for a database.
struct Question {
  std::string name;
  std::vector<std::string> words;  // "FILE" stands for the trace, "OUT" for a file to write
  char output;
  double most;
  // Bytes of memory a call beside the file; `as_first` for what the first question took.
  double most_bytes_a_call = 100;

  static constexpr double as_first = 0;
};

const std::vector<Question>& questions() {
  static const std::vector<Question> rows = {
      {"top", {"top", "FILE"}, 'S', 2.5},
      {"summary", {"summary", "FILE"}, 'S', 6},
      {"sql, sums", {"sql", "FILE", "select count(*), sum(own_ns) from calls"}, 'S', 2.5},
      {"sql, by name",
       {"sql", "FILE", "select name, count(*), sum(own_ns) from calls group by name"},
       'S',
       6},
      {"sql, arguments",
       {"sql", "FILE", "select count(*) from calls where args ->> 0 like '%x%'"},
       'J',
       2},
      {"calls x::y", {"calls", "FILE", "x::y"}, 'S', 2.5},
      {"show 500", {"show", "FILE", "500"}, 'S', 2.5},
      {"tree", {"tree", "FILE"}, 'S', 6},
      {"check", {"check", "FILE"}, 'S', 3, 64},
      {"salvage, whole", {"salvage", "FILE", "-o", "OUT"}, 'S', 4},
      // It holds the copy, which is as large as the trace, 171 bytes a call.
      {"redact", {"redact", "FILE", "-o", "OUT"}, 'J', 2, 235},
      {"export speedscope", {"export", "FILE", "--to", "speedscope"}, 'J', 1, Question::as_first},
      {"export folded", {"export", "FILE", "--to", "folded"}, 'J', 1, Question::as_first},
      {"export callgrind", {"export", "FILE", "--to", "callgrind"}, 'J', 1, Question::as_first},
      {"export csv, no values",
       {"export", "FILE", "--to", "csv", "--values", "none"},
       'J',
       1,
       Question::as_first},
      {"export chrome", {"export", "FILE", "--to", "chrome"}, 'J', 1.5, Question::as_first},
      {"export jsonl", {"export", "FILE", "--to", "jsonl"}, 'J', 1.5, Question::as_first},
      {"export sqlite, calls",
       {"export", "FILE", "--to", "sqlite", "--table", "calls", "-o", "OUT"},
       'J',
       6,
       Question::as_first},
      {"export sqlite",
       {"export", "FILE", "--to", "sqlite", "-o", "OUT"},
       'J',
       10,
       Question::as_first},
      // It holds what it packed, which is written only once it is known what has room.
      {"report", {"report", "FILE", "-o", "OUT"}, 'J', 2, 140},
  };
  return rows;
}

constexpr double most_growth = 1.15;

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Medians of several runs.
struct Cost {
  double seconds = 0;
  double of_reader = 0;  // seconds of the reader's output
  double mebibytes = 0;
};

class Questions {
 public:
  Questions(std::string tool, std::string cttool)
      : tool_(std::move(tool)), cttool_(std::move(cttool)) {}

  // Whether all of it was within its limits.
  bool run(bool quick);

 private:
  void make_trace(std::uint64_t calls);
  [[nodiscard]] Usage run_once(const std::vector<std::string>& command) const;
  [[nodiscard]] Cost measure(const Question& question, int runs) const;
  void print_row(const Question& question, const Cost& cost);
  void print_growth(const std::vector<Cost>& small, const std::vector<Cost>& large);

  std::string tool_;
  std::string cttool_;
  TemporaryFile file_{"questions.ct"};
  TemporaryFile out_{"questions.out"};
  std::string trace_ = file_.path().string();
  std::uint64_t calls_ = 0;
  double bytes_of_first_ = 0;
  bool is_within_limits_ = true;
};

void Questions::make_trace(std::uint64_t calls) {
  const fs::path maker = fs::read_symlink("/proc/self/exe").parent_path() / "make_trace";
  const Usage usage = CT::Bench::run({maker.string(), std::to_string(calls), trace_}, {});
  if (usage.status != 0) throw std::runtime_error("cannot write " + trace_);
  calls_ = calls;
}

// A question that finds nothing ends with status 1.
Usage Questions::run_once(const std::vector<std::string>& command) const {
  Limits limits;
  limits.seconds = 300;
  Usage usage = CT::Bench::run(command, limits);
  if (usage.status != 0 && usage.status != 1) {
    throw std::runtime_error(command.front() + " " + command[1] + ": " + usage.failure);
  }
  return usage;
}

// Reader and companion in turn, so that both meet the same weather.
Cost Questions::measure(const Question& question, int runs) const {
  std::vector<std::string> command = {cttool_};
  for (const std::string& word : question.words) {
    command.push_back(word == "FILE" ? trace_ : word == "OUT" ? out_.path().string() : word);
  }
  const std::vector<std::string> reader = {tool_, std::string("-") + question.output, trace_};
  std::vector<double> times;
  std::vector<double> reader_times;
  std::vector<double> sizes;
  for (int i = 0; i != runs; ++i) {
    const Usage usage = run_once(command);
    times.push_back(usage.seconds);
    sizes.push_back(usage.mebibytes);
    reader_times.push_back(run_once(reader).seconds);
  }
  return {median(times), median(reader_times), median(sizes)};
}

void Questions::print_row(const Question& question, const Cost& cost) {
  const double ratio = cost.seconds / cost.of_reader;
  const double bytes = (cost.mebibytes * mebibyte - static_cast<double>(fs::file_size(trace_))) /
                       static_cast<double>(calls_);
  if (&question == &questions().front()) bytes_of_first_ = bytes;
  const bool is_as_first = question.most_bytes_a_call == Question::as_first;
  const double most_bytes = is_as_first ? bytes_of_first_ : question.most_bytes_a_call;
  const bool is_good = ratio <= question.most && bytes <= most_bytes;
  is_within_limits_ = is_within_limits_ && is_good;
  std::printf("| %s | %.3f | %.2f x `-%c` | %.1f | %.0f | %s |\n", question.name.c_str(),
              cost.seconds, ratio, question.output, question.most, bytes, is_good ? "" : "!!");
  std::fflush(stdout);
}

void Questions::print_growth(const std::vector<Cost>& small, const std::vector<Cost>& large) {
  std::printf("\n| Question | time a call, 10^7 against 10^6 | |\n|---|---|---|\n");
  for (std::size_t row = 0; row != questions().size(); ++row) {
    const double growth = large[row].seconds / (10 * small[row].seconds);
    const bool is_good = growth <= most_growth;
    is_within_limits_ = is_within_limits_ && is_good;
    std::printf("| %s | %.2f | %s |\n", questions()[row].name.c_str(), growth, is_good ? "" : "!!");
  }
}

bool Questions::run(bool quick) {
  std::vector<std::uint64_t> sizes = {1'000'000, 10'000'000};
  if (quick) sizes.pop_back();
  std::vector<std::vector<Cost>> costs;
  for (const std::uint64_t calls : sizes) {
    make_trace(calls);
    std::printf("\n## Questions, %.0e calls, %.1f MB\n\n", static_cast<double>(calls),
                file_.mebibytes() * mebibyte / 1e6);
    std::printf(
        "| Question | s | against the reader | at most | bytes a call beside the file | |\n"
        "|---|---|---|---|---|---|\n");
    costs.emplace_back();
    for (const Question& question : questions()) {
      costs.back().push_back(measure(question, calls > 1'000'000 ? 3 : 5));
      print_row(question, costs.back().back());
    }
  }
  if (!quick) print_growth(costs[0], costs[1]);
  return is_within_limits_;
}

}  // namespace
}  // namespace CT::Bench

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() < 2) {
    std::fprintf(stderr, "%s TOOL CTTOOL [--quick]\n", argv[0]);
    return 2;
  }
  try {
    const bool quick = words.size() > 2 && words[2] == "--quick";
    return CT::Bench::Questions(words[0], words[1]).run(quick) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
