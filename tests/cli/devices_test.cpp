// SPDX-License-Identifier: MIT
//
// The tool among real files, pipes and devices: where traces come from, where outputs go, and what
// is said when one of them fails. Commands are run by a shell, with `codetrace` as the tool.
#include "devices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace CT::Test {
namespace {

TEST_F(Devices, TraceFromAPipe) { expect("cat t.ct | codetrace /dev/stdin", line, "", 0); }

TEST_F(Devices, TraceFromRedirectedInput) { expect("codetrace /dev/stdin < t.ct", line, "", 0); }

TEST_F(Devices, TraceFromAFifo) {
  expect("mkfifo f && { cat t.ct > f & } && codetrace f", line, "", 0);
}

TEST_F(Devices, EndlessInputThatIsNoTraceIsRefused) {
  expect("codetrace /dev/zero", "",
         "Failed to open /dev/zero : Invalid Code Trace dump file magic\n", 1);
}

TEST_F(Devices, SurplusBytesOfAPipeAreCounted) {
  const std::string expected = std::to_string(bytes_.size());
  const std::string got = std::to_string(bytes_.size() + 10000);
  expect("{ cat t.ct; head -c 10000 /dev/zero; } | codetrace /dev/stdin", "",
         "Failed to open /dev/stdin : Expected " + expected + " bytes, but got " + got + " bytes\n",
         1);
}

TEST_F(Devices, EndlessSurplusIsCountedToALimit) {
  const std::string expected = std::to_string(bytes_.size());
  const ProcessResult result = shell("{ cat t.ct; cat /dev/zero; } | codetrace /dev/stdin");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_error, testing::StartsWith("Failed to open /dev/stdin : Expected " +
                                                         expected + " bytes, but got 107374"));
}

TEST_F(Devices, NoMemoryForTheTrace) {
  if (is_sanitized) GTEST_SKIP();
  // A sparse file, as long as its header says.
  std::string header("CT\x01", 3);
  header.resize(12, '\0');
  header += std::string(4, '\xFF');
  header.resize(36, '\0');
  write_file(folder_.path() / "h", header);
  expect("truncate -s 4294967331 h; ulimit -v 2000000; codetrace h", "",
         "Failed to open h : Cannot allocate memory\n", 1);
}

TEST_F(Devices, NonBlockingPipes) {
  // The shell's dd makes both ends non-blocking; the readers and writers are slow to come.
  expect(
      "{ sleep 0.2; cat t.ct; } | { dd iflag=nonblock count=0 2>/dev/null; codetrace /dev/stdin; }",
      line, "", 0);
  const ProcessResult slow =
      shell("{ dd oflag=nonblock count=0 2>/dev/null; codetrace -B '" CODETRACE_ROOT
            "/examples/notes.ct'; echo $? >&2; } | { sleep 0.3; wc -c; }");
  EXPECT_EQ(slow.standard_error, "0\n");
  EXPECT_GT(std::stoi(slow.standard_output), 1000000);
}

TEST_F(Devices, HeaderThatPromisesTooMuchCostsNoMemory) {
  if (is_sanitized) GTEST_SKIP();
  std::string header("CT\x01", 3);
  header.resize(12, '\0');
  header += std::string(8, '\xFF');
  header.resize(36, '\0');
  write_file(folder_.path() / "h", header);
  expect("ulimit -v 1000000; cat h | codetrace /dev/stdin", "",
         "Failed to open /dev/stdin : Expected 8589934626 bytes, but got 36 bytes\n", 1);
}

TEST_F(Devices, FullStandardOutput) {
  expect("codetrace t.ct > /dev/full", "",
         "Failed to write output file standard output : No space left on device\n", 1);
}

TEST_F(Devices, FullOutputFile) {
  expect("codetrace -o /dev/full t.ct", "",
         "Failed to write output file /dev/full : No space left on device\n", 1);
}

TEST_F(Devices, FullStandardOutputForUsageAndVersion) {
  const std::string error =
      "Failed to write output file standard output : No space left on device\n";
  expect("codetrace -h > /dev/full", "", error, 1);
  expect("codetrace -V > /dev/full", "", error, 1);
}

TEST_F(Devices, FileSizeLimit) {
  // The limit would hold for the files that catch the outputs too, hence the pipe.
  expect("(ulimit -f 0; codetrace -o out t.ct; echo $?) 2>&1 | cat",
         "Failed to write output file out : File too large\n1\n", "", 0);
}

TEST_F(Devices, ClosedStandardOutput) {
  expect("codetrace t.ct >&-", "",
         "Failed to write output file standard output : Bad file descriptor\n", 1);
}

TEST_F(Devices, ClosedStandardStreamsAreNotTakenByFiles) {
  expect("codetrace -o out t.ct <&- >&- 2>&-", "", "", 0);
  EXPECT_EQ(content("out"), line);
  EXPECT_EQ(content("t.ct"), bytes_);
}

TEST_F(Devices, AnyStandardStreamMayBeClosed) {
  const std::pair<std::string, int> closings[] = {
      {"", 0},        {"<&-", 0},      {">&-", 1},      {"2>&-", 0},
      {"<&- >&-", 1}, {"<&- 2>&-", 0}, {">&- 2>&-", 1}, {"<&- >&- 2>&-", 1}};
  for (const auto& [closing, status_without_file] : closings) {
    write_file(folder_.path() / "out", "");
    expect("codetrace -o out t.ct " + closing, "", "", 0);
    EXPECT_EQ(content("out"), line) << closing;
    EXPECT_EQ(shell("codetrace t.ct " + closing).status, status_without_file) << closing;
    EXPECT_EQ(content("t.ct"), bytes_) << closing;
  }
}

TEST_F(Devices, FilesOfOthers) {
  if (shell("setpriv --reuid 65534 true").status != 0) GTEST_SKIP() << "no other user to be";
  expect("cp '" CODETRACE_BINARY
         "' tool; chmod 755 . tool; touch secret; chmod 600 secret; "
         "setpriv --reuid 65534 ./tool secret",
         "", "Failed to open secret : Permission denied\n", 1);
  expect("mkdir locked; setpriv --reuid 65534 ./tool -o locked/out t.ct", "",
         "Failed to open output file locked/out : Permission denied\n", 1);
}

TEST_F(Devices, TraceThatShrinksWhileItIsRead) {
  // Whoever wins the race: a whole trace or a message, never a crash.
  std::string header("CT\x01", 3);
  header.resize(12, '\0');
  header += std::string("\x08\0\0\0", 4);
  header.resize(36, '\0');
  write_file(folder_.path() / "h", header);
  const ProcessResult result = shell(
      "truncate -s 134217764 h; { sleep 0.02; truncate -s 1000 h; } & codetrace h; s=$?; "
      "wait; exit $s");
  EXPECT_EQ(result.status, result.standard_error.empty() ? 0 : 1);
  EXPECT_THAT(result.standard_error,
              testing::AnyOf("", testing::ContainsRegex("Expected 134217764 bytes, but got")));
}

TEST_F(Devices, ReaderThatLeavesEndsTheRunQuietly) {
  // Far more output than a pipe holds.
  expect("(codetrace -B '" CODETRACE_ROOT "/examples/notes.ct'; echo $? >status) | head -c 5",
         "\nDATA", "", 0);
  EXPECT_EQ(content("status"), "1\n");
}

TEST_F(Devices, OutputIntoTheTraceItselfIsRefused) {
  std::filesystem::create_hard_link(folder_.path() / "t.ct", folder_.path() / "hard");
  std::filesystem::create_symlink("t.ct", folder_.path() / "soft");
  for (const std::string name : {"t.ct", "./t.ct", "hard", "soft"}) {
    expect("codetrace -o " + name + " t.ct", "",
           "Failed to open output file " + name + " : it is the Code Trace file itself\n", 1);
    EXPECT_EQ(content("t.ct"), bytes_);
  }
  expect("codetrace -o t.ct /dev/stdin < t.ct", "",
         "Failed to open output file t.ct : it is the Code Trace file itself\n", 1);
  EXPECT_EQ(content("t.ct"), bytes_);
}

TEST_F(Devices, OutputReplacesWhatWasThere) {
  expect("printf '%9999s' x > out; codetrace -o out t.ct", "", "", 0);
  EXPECT_EQ(content("out"), line);
}

TEST_F(Devices, OutputIntoAPipe) {
  expect("mkfifo f && { cat f & } && codetrace -o f t.ct && wait", line, "", 0);
}

TEST_F(Devices, SqliteAloneWritesNothing) { expect("codetrace -S t.ct", "", "", 0); }

}  // namespace
}  // namespace CT::Test
