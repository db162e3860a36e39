// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_sql_stop.h"

#include <array>
#include <cstdio>

namespace CT::Tool {

namespace {

volatile std::sig_atomic_t is_interrupted = 0;

extern "C" void note_interrupt(int) { is_interrupted = 1; }

}  // namespace

QueryStop::QueryStop(std::optional<double> seconds) : seconds_(seconds) {
  // Beyond that the clock has no time.
  constexpr double longest = 1e9;
  if (seconds && *seconds < longest) {
    deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                   std::chrono::duration<double>(*seconds));
  }
  is_interrupted = 0;
  struct sigaction action = {};
  action.sa_handler = note_interrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, &before_);
  // Who was started to ignore it, as in the background, goes on to.
  if (before_.sa_handler == SIG_IGN) sigaction(SIGINT, &before_, nullptr);
}

QueryStop::~QueryStop() { sigaction(SIGINT, &before_, nullptr); }

bool QueryStop::is_wanted() {
  is_late_ = is_late_ || (deadline_ && Clock::now() >= *deadline_);
  return is_late_ || is_interrupted != 0;
}

std::string QueryStop::reason() const {
  if (!is_late_) return "interrupted";
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "not done after %g s, which is what --timeout allows",
                seconds_.value_or(0));
  return text.data();
}

}  // namespace CT::Tool
