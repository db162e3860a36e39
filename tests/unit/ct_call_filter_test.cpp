// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_call_filter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "open_trace.h"
#include "tools/cttool/ct_call_line.h"

namespace CT::Tool {
namespace {

// Nodes 1 to 5 are calls.
constexpr std::string_view trace_text =
    "E: class user \"App\\\\Failure\"\n"
    "Q: class internal \"PDO\"\n"
    "M: function user \"main\"\n"
    "F: function internal \"query\" class Q\n"
    "startup @10 mem 100\n"
    "a: call @10 mem 100 fn M args [\"x\"]\n"
    "b: method @10+1000000 mem 110 fn F this obj(Q, 1) args [\"select 1\", 5]\n"
    "return @10+4000000 mem 130 of b value \"one row\"\n"
    "c: method @10+5000000 mem 110 fn F this obj(Q, 2) args [\"select 2\", 5]\n"
    "exception @10+6000000 mem 130 of c value obj(E, 9)\n"
    "d: call @10+7000000 mem 150 fn M args []\n"
    "e: method @10+8000000 mem 150 fn F this obj(Q, 1) args [\"drop\", [1, \"five\"]]\n"
    "return @10+8000001 mem 150 of e value null\n"
    "shutdown @10+30000000 mem 91\n";

class CallFilterTest : public ::testing::Test {
 protected:
  CallFilterTest() {
    const std::string bytes = CT::Test::build_traces(trace_text).front().bytes;
    EXPECT_TRUE(trace_.open(CT::Test::as_bytes(bytes), bytes.size()));
    measures_ = Measures(trace_);
  }

  // The ids of the calls that are taken; "bad" if the conditions are.
  std::string taken(const CallConditions& conditions) {
    CallFilter filter(trace_, measures_);
    if (!filter.set(conditions)) return "bad";
    std::string ids;
    for (NodeId id = 0; id != trace_.node_count(); ++id) {
      if (filter.takes(id)) ids += std::to_string(id) + " ";
    }
    return ids;
  }

  Trace trace_;
  Measures measures_;
};

TEST_F(CallFilterTest, WithoutConditionsAllCallsAreTaken) { EXPECT_EQ(taken({}), "1 2 3 4 5 "); }

TEST_F(CallFilterTest, OneOfThePatternsMustMatch) {
  EXPECT_EQ(taken({.patterns = {"pdo::*"}}), "2 3 5 ");
  EXPECT_EQ(taken({.patterns = {"nothing", "/^ma/"}}), "1 4 ");
  EXPECT_EQ(taken({.patterns = {"/(/"}}), "bad");
}

TEST_F(CallFilterTest, EachArgumentConditionMustHold) {
  EXPECT_EQ(taken({.arguments = {"select"}}), "2 3 ");
  EXPECT_EQ(taken({.arguments = {"select", "2=5"}}), "2 3 ");
  EXPECT_EQ(taken({.arguments = {"1=5"}}), "");
  EXPECT_EQ(taken({.arguments = {"1=/^(drop|x)$/"}}), "1 5 ");
  EXPECT_EQ(taken({.arguments = {"five"}}), "5 ");
  EXPECT_EQ(taken({.arguments = {"3="}}), "");
  EXPECT_EQ(taken({.arguments = {"0=x"}}), "bad");
  EXPECT_EQ(taken({.arguments = {"1=/(/"}}), "bad");
}

TEST_F(CallFilterTest, WhatCameOfThemMayBeAskedFor) {
  EXPECT_EQ(taken({.returned = "row"}), "2 ");
  EXPECT_EQ(taken({.returned = "null"}), "5 ");
  EXPECT_EQ(taken({.threw = true}), "3 ");
  EXPECT_EQ(taken({.threw = true, .thrown_class = "*\\failure"}), "3 ");
  EXPECT_EQ(taken({.threw = true, .thrown_class = "Other"}), "");
  EXPECT_EQ(taken({.open = true}), "1 4 ");
}

TEST_F(CallFilterTest, TimeAndFileMayBeAskedFor) {
  EXPECT_EQ(taken({.patterns = {"PDO::*"}, .least = "2ms"}), "2 ");
  EXPECT_EQ(taken({.least = "soon"}), "bad");
  EXPECT_EQ(taken({.file = "/srv/*"}), "");
  EXPECT_EQ(taken({.file = "*"}), "1 2 3 4 5 ");
}

TEST_F(CallFilterTest, ALineSaysWhatACallWas) {
  NodeLines lines(trace_, measures_);
  EXPECT_EQ(lines.line(0), "request");
  EXPECT_EQ(lines.line(1), "main(\"x\") never ended");
  EXPECT_EQ(lines.line(2), "PDO::query(\"select 1\", 5) returned \"one row\"");
  EXPECT_EQ(lines.line(3), "PDO::query(\"select 2\", 5) threw object(App\\Failure#9)");
  EXPECT_EQ(lines.line(5), "PDO::query(\"drop\", array(0 => 1, 1 => \"five\")) returned null");
  EXPECT_EQ(lines.way_to(5), (std::vector<NodeId>{0, 1, 4}));
}

TEST_F(CallFilterTest, ScopesAreNodesOrOutermostCalls) {
  const auto ranges = [&](const std::string& under) {
    Scope scope;
    if (!scope.find(trace_, measures_, under)) return std::string("none");
    std::string text;
    for (const Scope::Range& range : scope.ranges()) {
      text += std::to_string(range.first) + "-" + std::to_string(range.last) + " ";
    }
    return text;
  };
  EXPECT_EQ(ranges(""), "0-5 ");
  EXPECT_EQ(ranges("main"), "1-5 ");
  EXPECT_EQ(ranges("PDO::*"), "2-2 3-3 5-5 ");
  EXPECT_EQ(ranges("4"), "4-5 ");
  EXPECT_EQ(ranges("6"), "none");
  EXPECT_EQ(ranges("99999999999999999999"), "none");
  EXPECT_EQ(ranges("nothing"), "none");
}

}  // namespace
}  // namespace CT::Tool
