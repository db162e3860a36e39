// SPDX-License-Identifier: MIT
#include "kcommon/k_cmdline.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr KCmdLine::Option options[] = {
    {'a', KCmdLine::Argument::none, "alpha"},      {'b', KCmdLine::Argument::none, "alps"},
    {'o', KCmdLine::Argument::required, "output"}, {'v', KCmdLine::Argument::none, nullptr},
    {'w', KCmdLine::Argument::required, nullptr},  {},
};

// Code, argument and value of a position; "(null)" for a null value.
using Entry = std::tuple<int, std::string, std::string>;
using Entries = std::vector<Entry>;

Entries entries(const KCmdLine& line) {
  Entries all;
  for (auto at = line.begin(); at != line.end(); at.next()) {
    all.emplace_back(at.code(), at.argument(), at.value() == nullptr ? "(null)" : at.value());
  }
  return all;
}

class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words) : words_(std::move(words)) {
    words_.insert(words_.begin(), "program");
    for (std::string& word : words_) pointers_.push_back(word.data());
    pointers_.push_back(nullptr);
  }
  [[nodiscard]] int count() const { return static_cast<int>(words_.size()); }
  [[nodiscard]] char* const* vector() const { return pointers_.data(); }

 private:
  std::vector<std::string> words_;
  std::vector<char*> pointers_;
};

Entries parse(std::vector<std::string> words) {
  const Arguments arguments(std::move(words));
  return entries(KCmdLine(options, arguments.count(), arguments.vector()));
}

TEST(CmdLine, IsEmptyWithoutArguments) { EXPECT_EQ(parse({}), Entries{}); }

TEST(CmdLine, IsEmptyWithoutEvenAProgramName) {
  char* const none[] = {nullptr};
  const KCmdLine line(options, 0, none);
  EXPECT_TRUE(line.begin() == line.end());
}

TEST(CmdLine, KeepsOptionsAndFileNamesInTheirOrder) {
  EXPECT_EQ(parse({"x", "-a", "y", "--alps", "z", "-v"}), (Entries{{1, "x", "x"},
                                                                   {'a', "-a", "(null)"},
                                                                   {1, "y", "y"},
                                                                   {'b', "--alps", "(null)"},
                                                                   {1, "z", "z"},
                                                                   {'v', "-v", "(null)"}}));
}

TEST(CmdLine, ShortOptionsShareADash) {
  EXPECT_EQ(parse({"-avb"}),
            (Entries{{'a', "-avb", "(null)"}, {'v', "-avb", "(null)"}, {'b', "-avb", "(null)"}}));
}

TEST(CmdLine, AnArgumentFollowsOrIsJoined) {
  EXPECT_EQ(parse({"-o", "n", "-on", "-aon", "--output", "n", "--output=n", "-w", "n"}),
            (Entries{{'o', "-o", "n"},
                     {'o', "-on", "n"},
                     {'a', "-aon", "(null)"},
                     {'o', "-aon", "n"},
                     {'o', "--output", "n"},
                     {'o', "--output=n", "n"},
                     {'w', "-w", "n"}}));
}

TEST(CmdLine, AnArgumentMayLookLikeAnOption) {
  EXPECT_EQ(parse({"-o", "-a", "-o", "--", "-a"}),
            (Entries{{'o', "-o", "-a"}, {'o', "-o", "--"}, {'a', "-a", "(null)"}}));
}

TEST(CmdLine, AnArgumentMayBeEmpty) {
  EXPECT_EQ(parse({"-o", "", "--output=", "", "x"}),
            (Entries{{'o', "-o", ""}, {'o', "--output=", ""}, {1, "", ""}, {1, "x", "x"}}));
}

TEST(CmdLine, LongNamesMayBeCutWhileUnique) {
  EXPECT_EQ(parse({"--alpha", "--alph", "--o=n", "--out", "n"}),
            (Entries{{'a', "--alpha", "(null)"},
                     {'a', "--alph", "(null)"},
                     {'o', "--o=n", "n"},
                     {'o', "--out", "n"}}));
}

TEST(CmdLine, AnAmbiguousNameIsUnknown) {
  EXPECT_EQ(parse({"--al", "-a"}), (Entries{{2, "--al", "(null)"}, {'a', "-a", "(null)"}}));
}

TEST(CmdLine, AnUnknownOptionIsGivenAsTyped) {
  EXPECT_EQ(parse({"-x", "--outptu=foo", "-avx", "-xa", "-:", "-?"}),
            (Entries{{2, "-x", "(null)"},
                     {2, "--outptu=foo", "(null)"},
                     {'a', "-avx", "(null)"},
                     {'v', "-avx", "(null)"},
                     {2, "-avx", "(null)"},
                     {2, "-xa", "(null)"},
                     {'a', "-xa", "(null)"},
                     {2, "-:", "(null)"},
                     {2, "-?", "(null)"}}));
}

TEST(CmdLine, AnArgumentForAnOptionThatTakesNoneIsUnknown) {
  EXPECT_EQ(parse({"--alpha=1"}), (Entries{{2, "--alpha=1", "(null)"}}));
}

TEST(CmdLine, ALastOptionMayLackItsArgument) {
  EXPECT_EQ(parse({"-o"}), (Entries{{3, "-o", "(null)"}}));
  EXPECT_EQ(parse({"-vo"}), (Entries{{'v', "-vo", "(null)"}, {3, "-vo", "(null)"}}));
  EXPECT_EQ(parse({"x", "--output"}), (Entries{{1, "x", "x"}, {3, "--output", "(null)"}}));
}

TEST(CmdLine, ADoubleDashEndsTheOptions) {
  EXPECT_EQ(parse({"-a", "--", "-a", "--", "x"}),
            (Entries{{'a', "-a", "(null)"}, {1, "-a", "-a"}, {1, "--", "--"}, {1, "x", "x"}}));
  EXPECT_EQ(parse({"x", "--", "y"}), (Entries{{1, "x", "x"}, {1, "y", "y"}}));
  EXPECT_EQ(parse({"--"}), Entries{});
}

TEST(CmdLine, ALoneDashIsAFileName) {
  EXPECT_EQ(parse({"-", "-a"}), (Entries{{1, "-", "-"}, {'a', "-a", "(null)"}}));
}

TEST(CmdLine, NoEnvironmentVariableChangesTheOrder) {
  setenv("POSIXLY_CORRECT", "1", 1);
  EXPECT_EQ(parse({"x", "-a"}), (Entries{{1, "x", "x"}, {'a', "-a", "(null)"}}));
  unsetenv("POSIXLY_CORRECT");
}

TEST(CmdLine, PrintsNothingItself) {
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(parse({"-x", "--nonsense", "-o"}).size(), 3U);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(CmdLine, TwoLinesCanBeReadSideBySide) {
  const Arguments first({"-ab", "x"});
  const Arguments second({"-v", "y"});
  const KCmdLine one(options, first.count(), first.vector());
  const KCmdLine two(options, second.count(), second.vector());
  const Entries all = entries(one);
  EXPECT_EQ(entries(two), (Entries{{'v', "-v", "(null)"}, {1, "y", "y"}}));
  EXPECT_EQ(entries(one), all);
  EXPECT_EQ(all.size(), 3U);
}

}  // namespace
