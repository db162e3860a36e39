// SPDX-License-Identifier: MIT
//
// Outputs that could be the trace itself, that nobody will get, or whose names look like something
// else than a file's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "devices.h"

namespace CT::Test {
namespace {

class OutputDevices : public Devices {
 protected:
  void expect_refused(const std::string& command, const std::string& name) {
    expect(command, "",
           "Failed to open output file " + name + " : it is the Code Trace file itself\n", 1);
    EXPECT_EQ(content("t.ct"), bytes_) << command;
  }
};

TEST_F(OutputDevices, TheTraceAsStandardOutputIsRefused) {
  for (const std::string redirection : {">> t.ct", "1<> t.ct", ">> ./link"}) {
    std::filesystem::remove(folder_.path() / "link");
    std::filesystem::create_hard_link(folder_.path() / "t.ct", folder_.path() / "link");
    for (const std::string options : {"", "-S ", "-HBDJT "}) {
      expect_refused("codetrace " + options + "t.ct " + redirection, "standard output");
    }
  }
  expect_refused("codetrace /dev/stdin < t.ct >> t.ct", "standard output");
}

TEST_F(OutputDevices, TheTraceBehindADescriptorIsRefused) {
  expect_refused("codetrace -o /dev/stdout t.ct >> t.ct", "/dev/stdout");
  expect_refused("codetrace -o /dev/fd/3 t.ct 3>> t.ct", "/dev/fd/3");
}

TEST_F(OutputDevices, TheTraceMayBeStandardOutputThatIsNotUsed) {
  expect("codetrace -o out t.ct >> t.ct", "", "", 0);
  EXPECT_EQ(content("out"), line);
  EXPECT_EQ(content("t.ct"), bytes_);
}

TEST_F(OutputDevices, TheTraceOfOthersIsNamedThoughItCannotBeWritten) {
  if (shell("setpriv --reuid 65534 true").status != 0) GTEST_SKIP() << "no other user to be";
  expect_refused(
      "cp '" CODETRACE_BINARY
      "' tool; chmod 755 . tool; chmod 444 t.ct; setpriv --reuid 65534 ./tool -o t.ct t.ct",
      "t.ct");
}

TEST_F(OutputDevices, ALinkThatIsSwappedMeanwhileHarmsNothing) {
  // Whoever wins the race: the trace is refused or the other file is written.
  const ProcessResult result = shell(
      "touch other; ln -s other one; ln -s t.ct two; ln -s other link; "
      "while [ ! -e done ]; do cp -P one x; mv -T x link; cp -P two x; mv -T x link; done & "
      "for i in $(seq 60); do codetrace -o link t.ct 2>/dev/null; done; touch done; wait");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(content("t.ct"), bytes_);
}

TEST_F(OutputDevices, NamesOfClosedStandardStreamsLeadNowhere) {
  expect("codetrace -o /dev/stdout t.ct >&-", "",
         "Failed to open output file /dev/stdout : No such file or directory\n", 1);
  expect("codetrace -o /dev/stdin t.ct <&-", "",
         "Failed to open output file /dev/stdin : No such file or directory\n", 1);
  expect("codetrace -o /dev/stderr t.ct 2>&-", "", "", 1);
  expect("codetrace -o /dev/null t.ct <&- >&-", "", "", 0);
  expect("codetrace -o /dev/stdout t.ct <&- 2>&-", line, "", 0);
}

TEST_F(OutputDevices, FewDescriptorsAreEnough) {
  if (is_sanitized) GTEST_SKIP() << "the sanitizers keep a descriptor for themselves";
  for (const std::string closing : {"", "<&-", "<&- >&-", "<&- >&- 2>&-"}) {
    write_file(folder_.path() / "out", "what was there");
    expect(
        "sh -c 'ulimit -n 4; exec \"$0\" -o out t.ct' '" CODETRACE_BINARY "' 3>&- 4>&- " + closing,
        "", "", 0);
    EXPECT_EQ(content("out"), line) << closing;
  }
}

TEST_F(OutputDevices, NothingIsEmptiedThatCannotBeWritten) {
  if (shell("setpriv --reuid 65534 true").status != 0) GTEST_SKIP() << "no other user to be";
  write_file(folder_.path() / "out", "what was there");
  expect("cp '" CODETRACE_BINARY
         "' tool; chmod 755 . tool; chmod 444 out; setpriv --reuid 65534 ./tool -o out t.ct",
         "", "Failed to open output file out : Permission denied\n", 1);
  EXPECT_EQ(content("out"), "what was there");
}

TEST_F(OutputDevices, NamesThatBeginWithAColonAreFiles) {
  expect("cp t.ct :c.ct; codetrace :c.ct", line, "", 0);
  expect("codetrace -o :out t.ct", "", "", 0);
  EXPECT_EQ(content(":out"), line);
  expect("codetrace :missing", "", "Failed to open :missing : No such file or directory\n", 1);
  expect("codetrace -o :/x t.ct", "",
         "Failed to open output file :/x : No such file or directory\n", 1);
}

TEST_F(OutputDevices, NewFilesObeyTheMask) {
  expect("umask 027; codetrace -o out t.ct; stat -c %a out", "640\n", "", 0);
}

}  // namespace
}  // namespace CT::Test
