// SPDX-License-Identifier: MIT
//
// The tool when calls fail that hardly ever do: each single allocation, and a device that takes
// nothing. See faults.cpp for how they are made to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "process.h"
#include "trace_text.h"

namespace CT::Test {
namespace {

constexpr const char* trace_text =
    "order little\n"
    "startup @10 url \"http://h/\" uri \"/\"\n"
    "shutdown @11\n";

class Faults : public testing::Test {
 protected:
  void SetUp() override {
    write_file(folder_.path() / "t.ct", build_traces(trace_text).front().bytes);
  }

  ProcessResult run(const std::string& faults, const std::string& arguments) {
    const std::string command = "exec 9>told; " + faults +
                                " LD_PRELOAD='" CODETRACE_FAULTS "' exec '" CODETRACE_BINARY "' ";
    return run_process("/bin/sh", {"sh", "-c", command + arguments}, folder_.path());
  }
  std::string content(const std::string& name) { return read_file(folder_.path() / name); }

  // Lets the first allocation of main() fail, then the second, until none is left.
  void expect_message_or_success(const std::string& faults, const std::string& arguments) {
    const ProcessResult whole = run("FAULTS_NONE=1", arguments);
    int messages = 0;
    for (int number = 1;; ++number) {
      SCOPED_TRACE(arguments + ", allocation " + std::to_string(number));
      const ProcessResult result =
          run(faults + " FAULTS_ALLOCATION=" + std::to_string(number), arguments);
      if (content("told").empty()) break;
      if (result.status == whole.status && result.standard_error == whole.standard_error) {
        // Something could do without.
        EXPECT_EQ(result.standard_output, whole.standard_output);
        continue;
      }
      ++messages;
      EXPECT_EQ(result.status, 1) << result.standard_error;
      EXPECT_THAT(result.standard_error,
                  testing::ContainsRegex("(Out of memory|Cannot allocate memory)\n$"));
    }
    EXPECT_GT(messages, 0);
  }

  TemporaryFolder folder_;
};

constexpr const char* command_lines[] = {"-HBDJT t.ct", "-J -o out t.ct", "-vvvvv -T -o out t.ct",
                                         "missing", "-x"};

TEST_F(Faults, EachAllocationThatFailsEndsWithAMessage) {
  for (const char* const arguments : command_lines) expect_message_or_success("", arguments);
}

TEST_F(Faults, NoMemoryFromAnAllocationOnEndsWithAMessage) {
  for (const char* const arguments : command_lines) {
    expect_message_or_success("FAULTS_ALL=1", arguments);
  }
}

TEST_F(Faults, MemoryThatEndsBeforeTheFirstByteLeavesTheOutputAlone) {
  const std::string before = "what was there";
  for (int number = 1;; ++number) {
    write_file(folder_.path() / "out", before);
    const ProcessResult result = run("FAULTS_ALLOCATION=" + std::to_string(number), "-o out t.ct");
    if (content("told").empty()) break;
    if (result.standard_error == "Out of memory\n") {
      EXPECT_EQ(content("out"), before) << number;
    }
  }
}

TEST_F(Faults, ADeviceThatTakesNothingIsAnError) {
  const ProcessResult result = run("FAULTS_WRITE=1", "t.ct");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error,
            "Failed to write output file standard output : Input/output error\n");
}

}  // namespace
}  // namespace CT::Test
