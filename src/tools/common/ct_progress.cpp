// SPDX-License-Identifier: MIT
#include "tools/common/ct_progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace CT::Tool {

using namespace std::chrono_literals;

Progress::Progress(int output)
    : wanted_(isatty(STDERR_FILENO) == 1 && isatty(output) != 1), next_(Clock::now() + 1s) {}

void Progress::show(const char* work, std::uint64_t done, std::uint64_t whole) {
  if (!wanted_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + 100ms;
  shown_ = true;
  const auto percent = static_cast<unsigned>(100 * done / std::max<std::uint64_t>(whole, 1));
  // The carriage return at the end lets any message write over it.
  std::fprintf(stderr, "%-8s%3u %%\r", work, percent);
  std::fflush(stderr);
}

void Progress::wipe() {
  if (!shown_) return;
  std::fputs("             \r", stderr);
  std::fflush(stderr);
  shown_ = false;
}

}  // namespace CT::Tool
