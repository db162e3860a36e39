// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_profile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "open_trace.h"

namespace CT::Test {
namespace {

constexpr std::string_view recursion =
    "F: function user \"f\"\n"
    "G: function user \"g\"\n"
    "N: function user \"never called\"\n"
    "startup @10 mem 100\n"
    "a: call @10 mem 100 fn F\n"
    "b: call @10+1 mem 110 fn G\n"
    "c: call @10+2 mem 120 fn F\n"
    "return @10+5 mem 130 of c\n"
    "return @10+7 mem 150 of b\n"
    "return @10+10 mem 90 of a\n"
    "d: call @10+20 mem 90 fn F\n"
    "return @10+22 mem 91 of d\n"
    "shutdown @10+30 mem 91\n";

Trace opened() {
  const std::string bytes = build_traces(recursion).front().bytes;
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size()));
  return trace;
}

// Calls, own, total and own memory of each row.
std::string text_of(const std::vector<ProfileRow>& rows) {
  std::string text;
  for (const ProfileRow& row : rows) {
    text += std::to_string(row.calls) + " " + std::to_string(row.own_ns) + " " +
            std::to_string(row.total_ns) + " " + std::to_string(row.own_memory) + "\n";
  }
  return text;
}

TEST(Profile, RecursionCountsOnceInTheTotal) {
  const Trace trace = opened();
  EXPECT_EQ(text_of(profile_of_functions(trace, Measures(trace))), "3 9 12 -39\n1 3 6 30\n");
}

TEST(Profile, GroupsMayBeAnything) {
  const Trace trace = opened();
  const Measures measures(trace);
  const auto all = [](NodeId) { return 0; };
  EXPECT_EQ(text_of(profile(trace, measures, all, 0, 4)), "5 30 30 -9\n");
  const auto calls_only = [](NodeId id) { return id == 0 ? no_group : 1; };
  EXPECT_EQ(text_of(profile(trace, measures, calls_only, 0, 4)), "0 0 0 0\n4 12 12 -9\n");
}

TEST(Profile, MayLookAtAPartOfTheTree) {
  const Trace trace = opened();
  const Measures measures(trace);
  const auto function = [&](NodeId id) { return measures[id].function; };
  EXPECT_EQ(text_of(profile(trace, measures, function, 2, 3)), "1 3 3 10\n1 3 6 30\n");
}

TEST(Profile, OfNothing) {
  const Trace trace;
  EXPECT_EQ(text_of(profile_of_functions(trace, Measures(trace))), "");
}

}  // namespace
}  // namespace CT::Test
