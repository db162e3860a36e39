// SPDX-License-Identifier: MIT
//
// The line about long work: a reader that comes late makes any run a long one. `script` gives the
// tool a terminal and prints what the terminal got.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "process.h"
#include "trace_builder.h"

namespace CT::Test {
namespace {

using testing::EndsWith;
using testing::MatchesRegex;

// More output than a pipe holds, and more nodes than are written between two looks at the clock.
std::string long_trace() {
  TraceBuilder trace;
  trace.add(CheckpointDraft::startup());
  const Ref function = trace.function({.name = "a_function_with_a_name"});
  for (int i = 0; i < 20'000; ++i) {
    trace.add(
        CheckpointDraft::function_return(trace.add(CheckpointDraft::function_call(function))));
  }
  trace.add(CheckpointDraft::shutdown());
  return trace.build();
}

class ProgressLine : public testing::Test {
 protected:
  void SetUp() override {
    if (run({"script", "-qec", "true", "/dev/null"}).status != 0) {
      GTEST_SKIP() << "/dev/pts is missing or cannot be used: no terminal";
    }
    write_file(folder_.path() / "t.ct", long_trace());
    expected_ = run({CODETRACE_BINARY, "-J", "-T", "t.ct"}).standard_output;
  }

  ProcessResult run(const std::vector<std::string>& words) {
    return run_process(
        "/usr/bin/env",
        [&] {
          std::vector<std::string> all = {"env"};
          all.insert(all.end(), words.begin(), words.end());
          return all;
        }(),
        folder_.path());
  }
  // What a terminal gets to see of a shell command.
  std::string seen(const std::string& command) {
    return run({"script", "-qec", command, "/dev/null"}).standard_output;
  }
  std::string content(const std::string& name) { return read_file(folder_.path() / name); }

  TemporaryFolder folder_;
  std::string expected_;
};

constexpr const char* wiped = "             \r";

TEST_F(ProgressLine, IsShownInATerminalAndWiped) {
  const std::string text = seen("'" CODETRACE_BINARY "' -J -T t.ct | (sleep 1.2; cat >out)");
  EXPECT_THAT(text, MatchesRegex("(writing +[0-9]+ %\r)+ +\r"));
  EXPECT_THAT(text, EndsWith(wiped));
  EXPECT_EQ(content("out"), expected_);
}

TEST_F(ProgressLine, IsNotShownForAShortRun) {
  EXPECT_EQ(seen("'" CODETRACE_BINARY "' -J -T t.ct >out"), "");
  EXPECT_EQ(content("out"), expected_);
}

TEST_F(ProgressLine, IsNotInALog) {
  EXPECT_EQ(seen("'" CODETRACE_BINARY "' -J -T t.ct 2>log | (sleep 1.2; cat >out)"), "");
  EXPECT_EQ(content("log"), "");
  EXPECT_EQ(content("out"), expected_);
}

TEST_F(ProgressLine, IsNotInAPipe) {
  EXPECT_EQ(
      seen("('" CODETRACE_BINARY "' -J -T t.ct 2>&1 >&3 | cat >log) 3>&1 | (sleep 1.2; cat >out)"),
      "");
  EXPECT_EQ(content("log"), "");
  EXPECT_EQ(content("out"), expected_);
}

}  // namespace
}  // namespace CT::Test
