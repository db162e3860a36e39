// SPDX-License-Identifier: MIT
//
// Runs a program in a process of its own and tells what it cost. The process ends for certain: it
// gets limits of processor time, elapsed time and address space, and its output can be cut off.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CT::Bench {

struct Limits {
  unsigned seconds = 60;
  // Address space; 0 for none.
  std::uint64_t memory = 0;
  // The output is read up to here and then closed, as `head -c` does; 0 sends all to `sink`.
  std::uint64_t output = 0;
  const char* sink = "/dev/null";
};

struct Usage {
  double seconds = 0;        // user and system time
  double mebibytes = 0;      // the largest resident set
  std::uint64_t output = 0;  // bytes read, if the output was limited
  int status = -1;           // exit status; -1 if a signal ended it
  std::string failure;       // what a signal says about it; empty when all is well
};

// Standard error goes to `error_file`, or to /dev/null if that is null. The memory counts from
// before the program starts, so the caller has to be small.
Usage run(const std::vector<std::string>& command, const Limits& limits,
          const char* error_file = nullptr);

}  // namespace CT::Bench
