// SPDX-License-Identifier: MIT
//
// When a query has to end before it is done: after a time that the user set, or for Ctrl-C. While
// one of these lives, the first Ctrl-C is noted here; a second one ends the process as ever.
#pragma once

#include <chrono>
#include <csignal>
#include <optional>
#include <string>

namespace CT::Tool {

class QueryStop {
 public:
  // No seconds: it may take as long as it wants.
  explicit QueryStop(std::optional<double> seconds);
  ~QueryStop();
  QueryStop(const QueryStop&) = delete;
  QueryStop& operator=(const QueryStop&) = delete;

  [[nodiscard]] bool is_wanted();
  // What made it end.
  [[nodiscard]] std::string reason() const;

 private:
  using Clock = std::chrono::steady_clock;

  std::optional<double> seconds_;
  std::optional<Clock::time_point> deadline_;
  bool is_late_ = false;
  struct sigaction before_ = {};
};

}  // namespace CT::Tool
