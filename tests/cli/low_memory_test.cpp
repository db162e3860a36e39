// SPDX-License-Identifier: MIT
//
// The tool with less and less memory: from the limit on at which a program with its libraries
// starts at all, it says what is wrong and ends with its status for that, or does its work.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "process.h"

namespace CT::Test {
namespace {

constexpr const char* run_tool =
    "'" CODETRACE_BINARY "' -HBDJT -o out '" CODETRACE_ROOT "/examples/notes.ct'";
constexpr const char* run_nothing = "'" CODETRACE_EMPTY_PROGRAM "'";
constexpr const char* run_companion =
    "'" CODETRACE_COMPANION "' summary '" CODETRACE_ROOT "/examples/notes.ct'";
constexpr const char* start_companion = "'" CODETRACE_COMPANION "' --version";

class LowMemory : public testing::Test {
 protected:
  ProcessResult with_limit(int kibibytes, const std::string& command) {
    const std::string limited = "ulimit -v " + std::to_string(kibibytes) + "; exec " + command;
    return run_process("/bin/sh", {"sh", "-c", limited}, folder_.path());
  }

  // The smallest limit, to a page or so, at which the command ends with status 0.
  int smallest_limit(const std::string& command) {
    int too_small = 1000;
    int enough = 4'000'000;
    while (enough - too_small > 4) {
      const int middle = (too_small + enough) / 2;
      (with_limit(middle, command).status == 0 ? enough : too_small) = middle;
    }
    return enough;
  }

  // With how many limits the command fails: always with a message and this status.
  int failures_between(int least, int enough, const std::string& command, int status) {
    int failures = 0;
    for (int limit = least; limit < enough; limit += 16) {
      const ProcessResult result = with_limit(limit, command);
      if (result.status == 0) continue;
      ++failures;
      EXPECT_EQ(result.status, status) << limit << ": " << result.standard_error;
      EXPECT_THAT(result.standard_error, testing::ContainsRegex("memory|space")) << limit;
    }
    return failures;
  }

  TemporaryFolder folder_;
};

TEST_F(LowMemory, EndsWithAMessageAndStatus1) {
  const int least = smallest_limit(run_nothing);
  const int enough = smallest_limit(run_tool);
  ASSERT_LT(least, enough);
  ASSERT_LT(enough - least, 8000) << "the tool needs more than its libraries explain";
  EXPECT_GT(failures_between(least, enough, run_tool, 1), 0);
}

TEST_F(LowMemory, TheCompanionEndsWithAMessageAndStatus2) {
  const int least = smallest_limit(start_companion);
  const int enough = smallest_limit(run_companion);
  ASSERT_LT(least, enough);
  EXPECT_GT(failures_between(least, enough, run_companion, 2), 0);
}

}  // namespace
}  // namespace CT::Test
