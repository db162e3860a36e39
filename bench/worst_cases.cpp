// SPDX-License-Identifier: MIT
//
// worst_cases list                      the names of the cases
// worst_cases write NAME N FILE         writes one of them
// worst_cases run TOOL [--quick] [NAME...]   measures the tool and prints the table
#include "worst_cases.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "worst_table.h"

namespace CT::Bench {

namespace {

// Sections of zeros that take no room on the disk: DATA alone, or both.
bool write_sparse(std::string_view name, std::uint64_t n, const std::string& path) {
  if (name != "sparse_data" && name != "sparse_both") return false;
  const auto size = static_cast<std::uint32_t>(n);
  const std::uint32_t behind = name == "sparse_both" ? size : 0;
  Test::TraceBuilder trace;
  trace.set_data_size(size);
  trace.set_add_data_size(behind);
  const std::string header = trace.build();
  const auto whole = static_cast<off_t>(header.size() + std::uint64_t{size} + behind);
  std::ofstream(path, std::ios::binary) << header;
  return truncate(path.c_str(), whole) == 0;
}

int write_case(std::string_view name, std::size_t n, const std::string& path) {
  if (write_sparse(name, n, path)) return 0;
  for (const WorstCase& worst : worst_cases()) {
    if (worst.name != name) continue;
    Test::TraceBuilder trace;
    worst.write(n, trace);
    std::ofstream file(path, std::ios::binary);
    file << trace.build();
    return file.flush() ? 0 : 1;
  }
  std::fprintf(stderr, "No such case\n");
  return 1;
}

int list_cases() {
  for (const WorstCase& worst : worst_cases()) {
    std::printf("%-24s %9zu  %s\n", worst.name.data(), worst.n, worst.what.data());
  }
  return 0;
}

int main_of(const std::vector<std::string>& words) {
  if (words.size() == 2 && words[1] == "list") return list_cases();
  if (words.size() == 5 && words[1] == "write") {
    return write_case(words[2], std::strtoull(words[3].c_str(), nullptr, 10), words[4]);
  }
  if (words.size() >= 3 && words[1] == "run") {
    const bool quick = words.size() >= 4 && words[3] == "--quick";
    return run_table(words[2], quick, {words.begin() + (quick ? 4 : 3), words.end()});
  }
  std::fprintf(stderr, "%s list | write NAME N FILE | run TOOL [--quick] [NAME...]\n",
               words.front().c_str());
  return 2;
}

}  // namespace
}  // namespace CT::Bench

int main(int argc, char** argv) {
  try {
    return CT::Bench::main_of({argv, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
