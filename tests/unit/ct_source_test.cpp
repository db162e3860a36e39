// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <limits>
#include <string>

#include "open_trace.h"
#include "tools/cttool/ct_brief.h"
#include "tools/cttool/ct_least_time.h"

namespace CT::Tool {
namespace {

constexpr std::int64_t long_after = 9'000'000'000;

// What is found of a file with these bytes.
SourceLine line_of(const std::string& bytes, std::uint32_t number,
                   std::int64_t seconds = long_after) {
  const std::string path = testing::TempDir() + "source_test.php";
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  SourceLine line = source_line(path, number, seconds);
  std::remove(path.c_str());
  return line;
}

// A line that is long, and one that is not.
std::string long_and_short(std::size_t size) {
  std::string bytes(size, 'x');
  bytes += "\nshort\n";
  return bytes;
}

TEST(Source, ALineIsFoundByItsNumber) {
  EXPECT_EQ(line_of("<?php\n  f();\r\n\nlast", 1).text, "<?php");
  EXPECT_EQ(line_of("<?php\n  f();\r\n\nlast", 2).text, "  f();");
  EXPECT_EQ(line_of("<?php\n  f();\r\n\nlast", 3).words(), "| ");
  EXPECT_EQ(line_of("<?php\n  f();\r\n\nlast", 4).words(), "| last");
  for (const std::uint32_t beyond : {0U, 5U, 4'000'000'000U}) {
    EXPECT_EQ(line_of("<?php\n  f();\r\n\nlast", beyond).words(), "(has no such line any more)");
  }
  EXPECT_EQ(line_of("", 1).problem, "has no such line any more");
  EXPECT_EQ(line_of("a\n", 2).problem, "has no such line any more");
}

TEST(Source, LinesBeyondTheFirstPieceAreFound) {
  std::string bytes;
  for (int i = 1; i <= 30'000; ++i) bytes += "line " + std::to_string(i) + "\n";
  EXPECT_EQ(line_of(bytes, 29'999).text, "line 29999");
}

TEST(Source, NeitherLongLinesNorLongFilesAreReadWhole) {
  EXPECT_EQ(line_of(long_and_short(100'000), 1).text, std::string(4096, 'x'));
  EXPECT_EQ(line_of(long_and_short(100'000), 2).text, "short");
  EXPECT_EQ(line_of(long_and_short(17U << 20), 2).problem, "is too large");
}

TEST(Source, ControlCharactersAreShown) {
  EXPECT_EQ(line_of("\x1b[2J\n", 1).words(), "| \\x1b[2J");
}

TEST(Source, AChangeBehindTheRequestIsSaid) {
  EXPECT_TRUE(line_of("a\n", 1, 1000).is_newer);
  EXPECT_EQ(line_of("a\n", 1, 1000).words(), "| a   (the file was changed after the request)");
  EXPECT_FALSE(line_of("a\n", 1).is_newer);
}

TEST(Source, OnlyRegularFilesAreLookedInto) {
  EXPECT_EQ(source_line("/dev/zero", 1, 0).problem, "is no regular file");
  EXPECT_EQ(source_line(testing::TempDir(), 1, 0).problem, "is no regular file");
  EXPECT_EQ(source_line("/does/not/exist.php", 1, 0).problem, "is not on this machine");
  EXPECT_EQ(source_line("relative.php", 1, 0).problem, "is no file");
  EXPECT_EQ(source_line("", 1, 0).problem, "is no file");
  EXPECT_EQ(source_line(std::string_view("/etc\0/passwd", 12), 1, 0).problem, "is no file");
  // A pipe would keep its reader waiting.
  const std::string pipe = testing::TempDir() + "source_test.pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(source_line(pipe, 1, 0).problem, "is no regular file");
  std::remove(pipe.c_str());
}

TEST(LeastTimes, AreTimesOrShares) {
  EXPECT_EQ(least_time("", 1000), 0);
  EXPECT_EQ(least_time("5us", 1000), 5000);
  EXPECT_EQ(least_time("2%", 1000), 20);
  EXPECT_EQ(least_time("0.05%", 1000), 1);
  EXPECT_EQ(least_time("0%", 1000), 0);
  constexpr std::int64_t longest = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(least_time("100%", longest), longest);
  for (const char* const bad : {"%", ".%", "101%", "-1%", "1e1%", "2 %", "2%%", "x", "nan%"}) {
    EXPECT_FALSE(least_time(bad, 1000)) << bad;
  }
}

// The line of the second node, of a trace with one call or point in its request.
std::string brief(const std::string& statements, ValueForm form = ValueForm::brief) {
  std::string first;
  for (const CT::Test::BuiltTrace& built :
       CT::Test::build_traces("C: class user \"A\\\\E\"\nF: function user \"f\"\nstartup @10\n" +
                              statements + "shutdown @20\n")) {
    Trace trace;
    EXPECT_TRUE(trace.open(CT::Test::as_bytes(built.bytes), built.bytes.size()));
    const Measures measures(trace);
    const std::string line = BriefLines(trace, measures, form).line(1);
    if (first.empty()) first = line;
    EXPECT_EQ(line, first);
  }
  return first;
}

TEST(Briefs, CallsHaveSixtyColumnsOfArguments) {
  EXPECT_EQ(brief("a: call @11 fn F args [1, \"x\\ny\"]\nreturn @12 of a value 7\n"),
            "f(1, \"x\\ny\")");
  const std::string line =
      brief("a: call @11 fn F args [\"" + std::string(500, 'x') + "\"]\nreturn @12 of a\n");
  EXPECT_EQ(line, "f(\"" + std::string(58, 'x') + "\xE2\x80\xA6)");
  EXPECT_EQ(brief("a: call @11 fn F args [5]\nreturn @12 of a\n", ValueForm::none), "f");
  EXPECT_EQ(brief("a: call @11 fn F args [5]\nreturn @12 of a value 7\n", ValueForm::full),
            "f(5) returned 7");
}

TEST(Briefs, CallsSayThatTheyFailed) {
  EXPECT_EQ(brief("a: call @11 fn F\n"), "f() never ended");
  EXPECT_EQ(brief("a: call @11 fn F\nexception @12 of a value obj(C, 3)\n"),
            "f() threw object(A\\E#3)");
}

TEST(Briefs, OtherNodesSayWhatTheyAre) {
  EXPECT_EQ(brief("error @11 8192 \"old \\x1b[0m\"\n"), "error E_DEPRECATED \"old \\x1b[0m\"");
  EXPECT_EQ(brief("error @11 3 \"m\"\n"), "error 3 \"m\"");
  EXPECT_EQ(brief("error @11 0 \"m\"\n"), "error 0 \"m\"");
  EXPECT_EQ(brief("error @11 32768 \"m\"\n"), "error 32768 \"m\"");
  EXPECT_EQ(brief("error @11 1 \"m\"\n"), "error E_ERROR \"m\"");
  EXPECT_EQ(brief("a: write @11 cut(\"<p>\", 2048)\nwrite_end @12 of a\n"),
            "write 2.0 KiB \"<p>\"\xE2\x80\xA6");
  EXPECT_EQ(brief("header @11 1 \"X: 1\"\n"), "header add \"X: 1\"");
  EXPECT_EQ(brief("header @11 4\n"), "header set status");
  EXPECT_EQ(brief("send_headers @11 404 \"Not Found\"\n"), "send_headers 404");
  EXPECT_EQ(brief("include @11 \"/a.php\"\n"), "include /a.php never ended");
  EXPECT_EQ(brief("exit @11\n"), "exit");
}

}  // namespace
}  // namespace CT::Tool
