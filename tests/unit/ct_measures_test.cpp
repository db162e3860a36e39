// SPDX-License-Identifier: MIT
//
// Each rule of the measures on the smallest trace that needs it.
#include "ctmeasure/ct_measures.h"

#include <gtest/gtest.h>

#include <string>

#include "ctmeasure/ct_elapsed.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

Trace opened(std::string_view bytes) {
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size())) << trace.error_message();
  return trace;
}

std::string marks_of(const Measure& node) {
  std::string text;
  if (node.has(Measure::open)) text += " open";
  if (node.has(Measure::untimed)) text += " untimed";
  if (node.has(Measure::end_untimed)) text += " end_untimed";
  if (node.has(Measure::moved)) text += " moved";
  return text;
}

// A node a line: start, total and own time, and what is odd about it.
std::string times(std::string_view text) {
  std::string first;
  for (const BuiltTrace& built : build_traces(text)) {
    std::string lines;
    const Trace trace = opened(built.bytes);
    const Measures measures(trace);
    for (NodeId id = 0; id != measures.node_count(); ++id) {
      const Measure& node = measures[id];
      lines += std::to_string(node.start_ns) + " " + std::to_string(node.total_ns) + " " +
               std::to_string(measures.own(id).ns) + marks_of(node) + "\n";
    }
    if (first.empty()) first = lines;
    EXPECT_EQ(lines, first);
  }
  return first;
}

// The same for memory: at the begin, delta and own; a bar for what is not known.
std::string memory(std::string_view text) {
  std::string lines;
  const Trace trace = opened(build_traces(text).front().bytes);
  const Measures measures(trace);
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const Measure& node = measures[id];
    lines += node.has(Measure::has_memory) ? std::to_string(node.memory) : "-";
    lines += node.has(Measure::has_delta) ? " " + std::to_string(node.memory_delta) + " " +
                                                std::to_string(measures.own(id).memory)
                                          : " - -";
    lines += "\n";
  }
  return lines;
}

TEST(Measures, OfNoNodes) {
  const Measures none;
  EXPECT_EQ(none.node_count(), 0);
  EXPECT_EQ(times("flush @1\n"), "");
}

TEST(Measures, OwnTimeIsWhatChildrenLeave) {
  EXPECT_EQ(times("F: function user \"f\"\n"
                  "startup @10\n"
                  "a: call @10+5 fn F\n"
                  "b: call @10+7 fn F\n"
                  "exit @10+8\n"
                  "return @10+10 of b\n"
                  "c: call @10+10 fn F\n"
                  "return @10+14 of c\n"
                  "return @10+20 of a\n"
                  "shutdown @10+30\n"),
            "0 30 15\n5 15 8\n7 3 3\n8 0 0\n10 4 4\n");
}

TEST(Measures, WhatHasNoEndEndsWithItsParent) {
  EXPECT_EQ(times("F: function user \"f\"\n"
                  "startup @10\n"
                  "a: call @10+5 fn F\n"
                  "b: call @10+7 fn F\n"
                  "return @10+20 of a\n"
                  "shutdown @10+30\n"),
            "0 30 15\n5 15 2\n7 13 13 open\n");
}

TEST(Measures, ARequestWithoutEndEndsAtTheLastTimeStamp) {
  EXPECT_EQ(times("F: function user \"f\"\n"
                  "startup @10\n"
                  "a: call @10+5 fn F\n"
                  "b: call @10+7 fn F\n"
                  "return @10+9 of b\n"),
            "0 9 5 open\n5 4 2 open\n7 2 2\n");
  EXPECT_EQ(times("startup @10\n"), "0 0 0 open\n");
}

TEST(Measures, WithoutTimeStampItStartsWhereTheNodeBeforeItStarted) {
  EXPECT_EQ(times("F: function user \"f\"\n"
                  "startup @10\n"
                  "a: call @10+5 fn F\n"
                  "exit\n"
                  "b: call fn F\n"
                  "return @10+9 of b\n"
                  "exit\n"
                  "return @10+11 of a\n"
                  "shutdown @10+30\n"),
            "0 30 24\n5 6 2\n5 0 0 untimed\n5 4 4 untimed\n5 0 0 untimed\n");
}

TEST(Measures, ASpanWithoutTimeStampStartsBehindTheOneBeforeIt) {
  EXPECT_EQ(times("F: function user \"f\"\n"
                  "startup @10\n"
                  "a: call @10+5 fn F\n"
                  "return @10+9 of a\n"
                  "b: call fn F\n"
                  "return @10+11 of b\n"
                  "shutdown @10+30\n"),
            "0 30 24\n5 4 4\n9 2 2 untimed\n");
}

TEST(Measures, AnEndWithoutTimeStampComesWithTheLastNodeUnderIt) {
  EXPECT_EQ(times("F: function user \"f\"\n"
                  "startup @10\n"
                  "a: call @10+5 fn F\n"
                  "b: call @10+6 fn F\n"
                  "return @10+9 of b\n"
                  "return of a\n"
                  "c: call @10+12 fn F\n"
                  "return of c\n"
                  "shutdown @10+30\n"),
            "0 30 26\n5 4 1 end_untimed\n6 3 3\n12 0 0 end_untimed\n");
}

TEST(Measures, AClockThatRunsBackwardsIsBroughtBetweenItsNeighbours) {
  EXPECT_EQ(times("F: function user \"f\"\n"
                  "startup @10\n"
                  "a: call @10+5 fn F\n"
                  "b: call @10+3 fn F\n"
                  "return @10+90 of b\n"
                  "c: call @10+6 fn F\n"
                  "return @10+8 of c\n"
                  "return @10+20 of a\n"
                  "d: call @10+19 fn F\n"
                  "return @10+18 of d\n"
                  "exit @9\n"
                  "shutdown @10+30\n"),
            "0 30 15\n5 15 0\n5 15 15 moved\n20 0 0 moved\n20 0 0 moved\n20 0 0 moved\n");
}

TEST(Measures, TimesCountFromTheFirstOneWhereTheRequestHasNone) {
  EXPECT_EQ(times("F: function user \"f\"\n"
                  "startup\n"
                  "a: call @10+5 fn F\n"
                  "return @10+9 of a\n"
                  "shutdown\n"),
            "0 4 0 untimed end_untimed\n0 4 4\n");
  EXPECT_EQ(times("startup\nexit\nshutdown\n"), "0 0 0 untimed end_untimed\n0 0 0 untimed\n");
}

TEST(Measures, TimesThatNoNumberHoldsAreBroughtToItsEnd) {
  constexpr KTime::Timestamp early = {std::numeric_limits<std::int64_t>::min(), 0};
  constexpr KTime::Timestamp late = {std::numeric_limits<std::int64_t>::max(), 0xFFFFFFFF};
  EXPECT_EQ(elapsed_ns(early, late), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(elapsed_ns(late, early), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(elapsed_ns({3, 999'999'999}, {5, 0}), 1'000'000'001);
  EXPECT_EQ(elapsed_ns({5, 0}, {3, 999'999'999}), -1'000'000'001);
  EXPECT_EQ(times("startup @0\nexit @9000000000000000000\nshutdown @9223372036854775807\n"),
            "0 9223372036854775807 9223372036854775807\n9223372036854775807 0 0\n");
}

TEST(Measures, AWrongEndClosesWhatItPointsAt) {
  EXPECT_EQ(times("T: text \"p\"\n"
                  "startup @10\n"
                  "a: include @10+5 T\n"
                  "return @10+9 of a\n"
                  "shutdown @10+30\n"),
            "0 30 26\n5 4 4\n");
}

TEST(Measures, MemoryIsThatOfTheBeginAndItsDelta) {
  EXPECT_EQ(memory("F: function user \"f\"\n"
                   "startup mem 100\n"
                   "a: call mem 110 fn F\n"
                   "b: call mem 120 fn F\n"
                   "exit mem 7\n"
                   "return mem 90 of b\n"
                   "return mem 150 of a\n"
                   "shutdown mem 80\n"),
            "100 -20 -60\n110 40 70\n120 -30 -30\n7 0 0\n");
}

TEST(Measures, MemoryThatIsNotSaidIsNotKnown) {
  EXPECT_EQ(memory("F: function user \"f\"\n"
                   "startup mem 100\n"
                   "a: call fn F\n"
                   "return mem 90 of a\n"
                   "b: call mem 110 fn F\n"
                   "return of b\n"
                   "c: call mem 120 fn F\n"
                   "exit\n"
                   "flush mem 130\n"),
            "100 30 20\n- - -\n110 - -\n120 10 10\n- - -\n130 0 0\n");
}

TEST(Measures, CountsWhatIsWorthAWord) {
  const Trace trace = opened(build_traces("F: function user \"f\"\n"
                                          "startup @10\n"
                                          "call @9 fn F\n"
                                          "call fn F\n"
                                          "exit\n")
                                 .front()
                                 .bytes);
  const Measures measures(trace);
  EXPECT_EQ(measures.counts().open, 3);
  EXPECT_EQ(measures.counts().untimed, 2);
  EXPECT_EQ(measures.counts().moved, 1);
}

TEST(Measures, NameTheFunctionOfACall) {
  const Trace trace = opened(build_traces("F: function user \"f\"\nG: function user \"g\"\n"
                                          "startup\ncall fn F\ncall fn G\nexit\ncall fn F\n")
                                 .front()
                                 .bytes);
  const Measures measures(trace);
  std::string functions;
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    functions += std::to_string(measures[id].function) + " ";
  }
  EXPECT_EQ(functions, "-1 0 1 -1 0 ");
}

}  // namespace
}  // namespace CT::Test
