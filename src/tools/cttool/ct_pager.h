// SPDX-License-Identifier: MIT
//
// The program that shows long text on a terminal page by page: $PAGER, or less if that is not set.
// Standard output goes to it from its start to the end of the process.
//
// While it runs the terminal is its own: Ctrl-C is for it and not for us, and so is leaving it
// early, which shows here as a closed pipe.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace CT::Tool {

class Pager {
 public:
  Pager() = default;
  ~Pager();
  Pager(const Pager&) = delete;
  Pager& operator=(const Pager&) = delete;

  // False if there is none, or if it cannot be run; standard output is as it was then.
  bool start();
  [[nodiscard]] bool is_running() const { return child_ > 0; }

  // Waits until the user has left it. Requires that standard output is closed, or it waits for
  // ever. False if there turned out to be no such program.
  bool finish();

 private:
  pid_t child_ = -1;
};

// The words of a command that a user set as $PAGER (null: not set): by way of the shell if it needs
// one; none if there is to be no pager.
std::vector<std::string> pager_command(const char* wanted);

}  // namespace CT::Tool
