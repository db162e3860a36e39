// SPDX-License-Identifier: MIT
//
// Which calls count as made again, on hand-made traces, and a slow and plain way to find them on
// random ones.
#include "ctmeasure/ct_repeats.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

#include "open_trace.h"

namespace CT::Test {
namespace {

// A repeat a line: function, first call, calls and total.
std::string line_of(const Repeat& repeat) {
  return std::to_string(repeat.function) + " " + std::to_string(repeat.first) + " " +
         std::to_string(repeat.calls) + " " + std::to_string(repeat.total_ns) + "\n";
}

// The same with what is to spare and the results.
std::string line_with_results(const Repeat& repeat) {
  return std::to_string(repeat.first) + " " + std::to_string(repeat.spare_ns()) + " " +
         std::string(word_of(repeat.results)) + "\n";
}

std::string found_in(std::string_view text, std::string (*line)(const Repeat&) = line_of) {
  std::string first;
  for (const BuiltTrace& built : build_traces(text)) {
    Trace trace;
    EXPECT_TRUE(trace.open(as_bytes(built.bytes), built.bytes.size())) << trace.error_message();
    std::string lines;
    for (const Repeat& repeat : repeats(trace, Measures(trace))) {
      lines += line(repeat);
    }
    if (built.order == ByteOrder::little) first = lines;
    EXPECT_EQ(lines, first);
  }
  return first;
}

const std::string two_functions =
    "A: class user \"A\"\nB: class user \"B\"\n"
    "F: function user \"f\" class A\nG: function user \"g\"\nstartup @10\n";

TEST(Repeats, AreOfOneFunctionWithEqualArguments) {
  EXPECT_EQ(found_in(two_functions +
                     "a: call @10+1 fn G args [1, \"x\"]\nreturn @10+3 of a\n"
                     "b: call @10+3 fn F args [1, \"x\"]\nreturn @10+4 of b\n"
                     "c: call @10+4 fn G args [1, \"y\"]\nreturn @10+5 of c\n"
                     "d: call @10+5 fn G args [1, \"x\"] \nreturn @10+8 of d value 7\n"
                     "e: call @10+8 fn G args [1, \"x\"]\nexception @10+9 of e value 1\n"),
            "0 1 3 6\n");
}

TEST(Repeats, AreOfTheSameObject) {
  EXPECT_EQ(
      found_in(two_functions + "a: method @10+1 fn F this obj(A, 1) args [5]\nreturn @10+2 of a\n"
                               "b: method @10+2 fn F this obj(A, 2) args [5]\nreturn @10+3 of b\n"
                               "c: method @10+3 fn F this obj(B, 1) args [5]\nreturn @10+4 of c\n"
                               "d: method @10+4 fn F this obj(A, 2) args [5]\nreturn @10+5 of d\n"
                               "e: call @10+5 fn F args [5]\nreturn @10+6 of e\n"),
      "0 2 2 2\n");
}

TEST(Repeats, ACallWithoutObjectIsNoneWithOne) {
  // An undef object, then no argument, is as many bytes as an argument count of its own.
  EXPECT_EQ(found_in(two_functions + "method fn F this undef args []\ncall fn F args []\n"
                                     "call fn F count 0 more hex(00)\n"),
            "");
}

TEST(Repeats, ComeWithMostToSpareFirst) {
  EXPECT_EQ(found_in(two_functions + "a: call @10+1 fn G args [1]\nreturn @10+9 of a\n"
                                     "b: call @10+9 fn G args [2]\nreturn @10+11 of b\n"
                                     "c: call @10+11 fn G args [2]\nreturn @10+13 of c\n"
                                     "d: call @10+13 fn G args [1]\nreturn @10+14 of d\n"
                                     "e: call @10+14 fn G args [3]\nreturn @10+17 of e\n"
                                     "f: call @10+17 fn G args [3]\nreturn @10+18 of f\n",
                     line_with_results),
            "2 2 none\n1 1 none\n5 1 none\n");
}

// Two calls that end so.
std::string ending(const std::string& one, const std::string& other) {
  return two_functions + "a: call @10+1 fn G args [1]\n" + one + "b: call @10+4 fn G args [1]\n" +
         other;
}

TEST(Repeats, SayWhetherResultsAreTheSame) {
  const auto found = [](const std::string& one, const std::string& other) {
    const std::string line =
        found_in(ending("return @10+3 of a" + one, "return @10+6 of b" + other), line_with_results);
    EXPECT_TRUE(line.starts_with("1 2 ")) << line;
    return line.substr(4);
  };
  EXPECT_EQ(found(" value \"x\"\n", " value \"x\"\n"), "same\n");
  EXPECT_EQ(found(" value \"x\"\n", " value \"y\"\n"), "differ\n");
  EXPECT_EQ(found(" value 1\n", " value \"1\"\n"), "differ\n");
  EXPECT_EQ(found(" value cut(\"x\", 9)\n", " value cut(\"x\", 8)\n"), "differ\n");
  EXPECT_EQ(found(" value obj(A, 3)\n", " value obj(A, 3)\n"), "handle\n");
  EXPECT_EQ(found(" value obj(A, 3)\n", " value obj(A, 4)\n"), "differ\n");
  EXPECT_EQ(found(" value null\n", " value null\n"), "none\n");
  EXPECT_EQ(found(" value null\n", " value undef\n"), "none\n");
  EXPECT_EQ(found(" value null\n", " value false\n"), "differ\n");
}

TEST(Repeats, SayWhetherTheyThrewTheSame) {
  const std::string threw = "exception @10+3 of a value obj(A, 3)\n";
  EXPECT_EQ(found_in(ending(threw, "exception @10+6 of b value obj(A, 3)\n"), line_with_results),
            "1 2 same\n");
  EXPECT_EQ(found_in(ending(threw, "exception @10+6 of b value obj(A, 4)\n"), line_with_results),
            "1 2 differ\n");
  EXPECT_EQ(found_in(ending(threw, "return @10+6 of b value obj(A, 3)\n"), line_with_results),
            "1 2 differ\n");
}

TEST(Repeats, WithoutEndHaveNoResultThatIsKnown) {
  EXPECT_EQ(found_in(two_functions + "a: call @10+1 fn G args [1]\nreturn @10+3 of a value 1\n"
                                     "b: call @10+3 fn G args [1]\nexit @10+5\n",
                     line_with_results),
            "1 2 unknown\n");
  EXPECT_EQ(found_in(two_functions + "a: call @10+1 fn G args [1]\nreturn @10+3 of a value 1\n"
                                     "b: call @10+3 fn G args [1]\nreturn @10+5 of b value 2\n"
                                     "c: call @10+5 fn G args [1]\nexit @10+9\n",
                     line_with_results),
            "1 4 differ\n");
}

TEST(Repeats, WhoseResultsDifferComeLast) {
  EXPECT_EQ(found_in(two_functions + "a: call @10+1 fn G args [1]\nreturn @10+9 of a value 1\n"
                                     "b: call @10+9 fn G args [1]\nreturn @10+19 of b value 2\n"
                                     "c: call @10+19 fn G args [2]\nreturn @10+20 of c value 1\n"
                                     "d: call @10+20 fn G args [2]\nreturn @10+21 of d value 1\n",
                     line_with_results),
            "3 1 same\n1 8 differ\n");
}

TEST(Repeats, InsideEachOtherAddUpToo) {
  EXPECT_EQ(found_in(two_functions + "a: call @10+1 fn G args [1]\nb: call @10+2 fn G args [1]\n"
                                     "return @10+4 of b\nreturn @10+6 of a\n"),
            "0 1 2 7\n");
}

TEST(Repeats, OfTextsThatWereCutAreToldByTheirSizes) {
  EXPECT_EQ(found_in(two_functions +
                     "call fn G args [cut(\"ab\", 9)]\ncall fn G args [\"ab\"]\n"
                     "call fn G args [cut(\"ab\", 8)]\ncall fn G args [cut(\"ab\", 9)]\n"),
            "0 1 2 0\n");
}

TEST(Repeats, TimesThatDoNotFitTogetherAreTheLargest) {
  EXPECT_EQ(found_in("G: function user \"g\"\nstartup @0\n"
                     "call @0 fn G\ncall @0 fn G\nexit @9223372036854775807\n"),
            "0 1 2 " + std::to_string(std::numeric_limits<std::int64_t>::max()) + "\n");
}

TEST(Repeats, OfADamagedRecordAreWhatIsLeft) {
  EXPECT_EQ(found_in(two_functions + "call fn G args [1] keep 8\ncall fn G args [2] keep 8\n"
                                     "call fn G args [2] keep 12\n"),
            "0 1 2 0\n");
  EXPECT_EQ(found_in("exit\n"), "");
}

TEST(Repeats, AreWhatComparingEachWithEachFinds) {
  std::mt19937 random(11);
  std::string text = two_functions;
  struct Call {
    std::string words;
    int calls = 0;
  };
  std::vector<Call> calls;
  // As many as make the table grow.
  for (int i = 0; i != 3000; ++i) {
    const std::string words = random() % 2 == 0
                                  ? "call fn G args [" + std::to_string(random() % 1500) + "]\n"
                                  : "method fn F this obj(A, " + std::to_string(random() % 40) +
                                        ") args [\"" + std::string(random() % 40, 'x') + "\"]\n";
    text += words;
    calls.push_back({words});
  }
  std::string expected;
  std::vector<bool> counted(calls.size());
  for (std::size_t i = 0; i != calls.size(); ++i) {
    if (counted[i]) continue;
    for (std::size_t j = i; j != calls.size(); ++j) {
      if (calls[j].words != calls[i].words) continue;
      counted[j] = true;
      ++calls[i].calls;
    }
    const bool is_first_kind = calls[i].words.starts_with(calls[0].words.substr(0, 4));
    if (calls[i].calls > 1) {
      expected += std::string(is_first_kind ? "0 " : "1 ") + std::to_string(i + 1) + " " +
                  std::to_string(calls[i].calls) + " 0\n";
    }
  }
  EXPECT_EQ(found_in(text), expected);
}

}  // namespace
}  // namespace CT::Test
