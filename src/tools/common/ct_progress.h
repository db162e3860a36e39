// SPDX-License-Identifier: MIT
//
// One line on standard error about work that takes more than a second: how far it is, written over
// and over, and wiped at the end. Only for somebody who looks at a terminal and would see nothing
// else: where standard error is one and the output is not.
#pragma once

#include <chrono>
#include <cstdint>

namespace CT::Tool {

class Progress {
 public:
  // `output`: the descriptor that the run writes to.
  explicit Progress(int output);
  ~Progress() { wipe(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  [[nodiscard]] bool is_wanted() const { return wanted_; }
  // Shows the share of what is called `work`, if it is time to. Does nothing unless is_wanted().
  void show(const char* work, std::uint64_t done, std::uint64_t whole);

 private:
  using Clock = std::chrono::steady_clock;
  void wipe();

  bool wanted_;
  bool shown_ = false;
  Clock::time_point next_;
};

}  // namespace CT::Tool
