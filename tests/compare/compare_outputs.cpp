// SPDX-License-Identifier: MIT
//
// compare_outputs OLD NEW PATH...   runs two builds of the tool on each trace and compares them
//
// A path is a trace, or a folder whose *.ct are taken. What must be the same for each output, and
// for the log: standard output, standard error, exit status. The first difference is shown, further
// ones are named. The status is 1 if there is any, 2 if there was nothing to compare.
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "process.h"
#include "stable_text.h"

namespace {

using CT::Test::ProcessResult;
using Words = std::vector<std::string>;

const std::array<Words, 6> commands = {Words{"-H"}, Words{"-B"}, Words{"-D"},
                                       Words{"-J"}, Words{"-T"}, Words{"-vvvv", "-S"}};
constexpr std::size_t most_named = 20;

struct Tools {
  std::filesystem::path old;
  std::filesystem::path current;
};

// The indented JSON of a value grows with the square of its depth, and some are a million deep.
// Behind the limit the tool's writes fail, and what it had written until then is compared.
void limit_outputs() {
  constexpr rlim_t most_bytes = rlim_t{160} << 20U;
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = std::min(limit.rlim_max, most_bytes);
  setrlimit(RLIMIT_FSIZE, &limit);
}

// A tool that goes on and on is ended by a signal, which is a difference to one that does not. The
// limit counts from the start of a process, and this one may have worked for long.
void limit_next_run() {
  constexpr rlim_t seconds = 120;
  rusage used = {};
  getrusage(RUSAGE_SELF, &used);
  rlimit limit = {};
  getrlimit(RLIMIT_CPU, &limit);
  const auto so_far = static_cast<rlim_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec);
  limit.rlim_cur = std::min(limit.rlim_max, so_far + seconds);
  setrlimit(RLIMIT_CPU, &limit);
}

ProcessResult run(const std::filesystem::path& tool, const Words& options,
                  const std::string& trace) {
  Words words = {"codetrace"};
  words.insert(words.end(), options.begin(), options.end());
  if (!trace.empty()) words.push_back(trace);
  limit_next_run();
  return CT::Test::run_process(tool, words, std::filesystem::current_path());
}

bool equal(const ProcessResult& a, const ProcessResult& b) {
  return a.status == b.status && a.standard_output == b.standard_output &&
         a.standard_error == b.standard_error;
}

void make_stable(ProcessResult& result) {
  CT::Test::StableText text;
  result.standard_output = text.normalise(result.standard_output);
  result.standard_error = text.normalise(result.standard_error);
}

// Some bytes around a place, one line, with what cannot be printed in hex.
std::string excerpt(std::string_view text, std::size_t at) {
  const std::size_t from = at - std::min<std::size_t>(at, 60);
  std::string shown;
  for (const char c : text.substr(from, 120)) {
    std::array<char, 5> hex = {};
    const auto byte = static_cast<unsigned>(static_cast<unsigned char>(c));
    std::snprintf(hex.data(), hex.size(), "\\x%02x", byte);
    shown += byte >= 0x20 && byte < 0x7F ? std::string(1, c) : std::string(hex.data());
  }
  return shown;
}

void show(const char* stream, std::string_view old, std::string_view current) {
  if (old == current) return;
  const auto places = std::mismatch(old.begin(), old.end(), current.begin(), current.end());
  const auto at = static_cast<std::size_t>(places.first - old.begin());
  std::printf("  %s, from byte %zu (%zu bytes old, %zu new; addresses replaced)\n", stream, at,
              old.size(), current.size());
  std::printf("    old: %s\n    new: %s\n", excerpt(old, at).c_str(), excerpt(current, at).c_str());
}

class Comparison {
 public:
  explicit Comparison(Tools tools) : tools_(std::move(tools)) {}

  void compare(const std::string& trace) {
    ++traces_;
    bool differs = false;
    for (const Words& options : commands) {
      ProcessResult old = run(tools_.old, options, trace);
      ProcessResult current = run(tools_.current, options, trace);
      if (equal(old, current)) continue;
      make_stable(old);
      make_stable(current);
      if (equal(old, current)) continue;
      differs = true;
      tell(trace, options, old, current);
    }
    if (differs) ++different_traces_;
  }

  int end() const {
    std::printf("%zu traces, %zu runs of each tool: ", traces_, traces_ * commands.size());
    if (different_runs_ == 0) {
      std::puts("no difference");
    } else {
      std::printf("%zu runs differ, on %zu traces\n", different_runs_, different_traces_);
    }
    return different_runs_ == 0 ? 0 : 1;
  }

 private:
  void tell(const std::string& trace, const Words& options, const ProcessResult& old,
            const ProcessResult& current) {
    ++different_runs_;
    if (different_runs_ == most_named + 1) std::puts("and more");
    if (different_runs_ > most_named) return;
    std::printf("different: codetrace");
    for (const std::string& option : options) std::printf(" %s", option.c_str());
    std::printf(" %s\n", trace.c_str());
    if (different_runs_ == 1) {
      if (old.status != current.status) {
        std::printf("  exit status: %d old, %d new\n", old.status, current.status);
      }
      show("standard output", old.standard_output, current.standard_output);
      show("standard error", old.standard_error, current.standard_error);
    }
    std::fflush(stdout);
  }

  Tools tools_;
  std::size_t traces_ = 0;
  std::size_t different_traces_ = 0;
  std::size_t different_runs_ = 0;
};

std::vector<std::string> traces_of(const std::filesystem::path& path) {
  std::vector<std::string> traces;
  if (!std::filesystem::is_directory(path)) return {path.string()};
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    if (entry.path().extension() == ".ct") traces.push_back(entry.path().string());
  }
  std::sort(traces.begin(), traces.end());
  if (traces.empty()) throw std::runtime_error("no traces in " + path.string());
  return traces;
}

// Two tools that cannot be started would be equal in everything.
void check(const std::filesystem::path& tool) {
  if (run(tool, {"-V"}, {}).status != 0) throw std::runtime_error("cannot run " + tool.string());
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 4) {
    std::fprintf(stderr, "%s OLD NEW PATH...\n", argv[0]);
    return 2;
  }
  const Tools tools = {std::filesystem::absolute(argv[1]), std::filesystem::absolute(argv[2])};
  limit_outputs();
  check(tools.old);
  check(tools.current);
  Comparison comparison(tools);
  for (int i = 3; i != argc; ++i) {
    for (const std::string& trace : traces_of(argv[i])) comparison.compare(trace);
  }
  return comparison.end();
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
  return 2;
}
