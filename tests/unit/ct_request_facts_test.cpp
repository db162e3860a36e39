// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_request_facts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "open_trace.h"

namespace CT::Test {
namespace {

Trace opened(std::string_view text, std::size_t order = 0) {
  const std::string bytes = build_traces(text)[order].bytes;
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size())) << trace.error_message();
  return trace;
}

TEST(RequestFacts, OfAWholeRequest) {
  for (const std::size_t order : {std::size_t{0}, std::size_t{1}}) {
    const Trace trace = opened(
        "F: function user \"f\"\n"
        "startup @10+7 mem 100 url \"/final\" uri \"/asked\" host \"h\" method \"GET\"\n"
        "a: call @10+8 mem 300 fn F\n"
        "b: call @10+9 mem 200 fn F\n"
        "error 8 \"odd\"\n"
        "return @10+11 mem 900 of b\n"
        "return @10+12 mem 900 of a\n"
        "shutdown @10+20 mem 50\n",
        order);
    const RequestFacts facts = request_facts(trace, Measures(trace));
    EXPECT_EQ(text_of(facts.url), "/final");
    EXPECT_EQ(text_of(facts.uri), "/asked");
    EXPECT_EQ(text_of(facts.host), "h");
    EXPECT_EQ(text_of(facts.method), "GET");
    ASSERT_TRUE(facts.started);
    EXPECT_EQ(iso_time(*facts.started), "1970-01-01T00:00:10.000000007Z");
    EXPECT_EQ(facts.total_ns, 13);
    EXPECT_EQ(facts.memory, 100U);
    EXPECT_EQ(facts.memory_peak, 900U);
    EXPECT_EQ(facts.peak_node, 1);
    EXPECT_EQ(facts.calls, 2);
    EXPECT_EQ(facts.errors, 1);
    EXPECT_EQ(facts.open, 0);
    EXPECT_EQ(facts.depth, 3U);
    EXPECT_TRUE(facts.is_complete);
  }
}

TEST(RequestFacts, OfNothing) {
  const Trace trace = opened("flush @1\n");
  const RequestFacts facts = request_facts(trace, Measures(trace));
  EXPECT_EQ(text_of(facts.url), "(absent)");
  EXPECT_FALSE(facts.started);
  EXPECT_FALSE(facts.memory);
  EXPECT_FALSE(facts.memory_peak);
  EXPECT_EQ(facts.peak_node, Storage::no_node);
  EXPECT_EQ(facts.calls, 0);
  EXPECT_FALSE(facts.is_complete);
}

TEST(RequestFacts, WhatNeverEndedIsNotComplete) {
  const Trace trace = opened(
      "F: function user \"f\"\n"
      "startup @10\n"
      "call @10+8 fn F\n");
  const RequestFacts facts = request_facts(trace, Measures(trace));
  EXPECT_EQ(facts.open, 2);
  EXPECT_EQ(facts.total_ns, 8);
  EXPECT_FALSE(facts.is_complete);
}

TEST(IsoTime, HasNineDigitsAndStaysInFourDigitYears) {
  EXPECT_EQ(iso_time({0, 0}), "1970-01-01T00:00:00.000000000Z");
  EXPECT_EQ(iso_time({-1, 999'999'999}), "1969-12-31T23:59:59.999999999Z");
  EXPECT_EQ(iso_time({951'782'400, 5}), "2000-02-29T00:00:00.000000005Z");
  EXPECT_EQ(iso_time({0, 4'000'000'001}), "1970-01-01T00:00:04.000000001Z");
  EXPECT_EQ(iso_time({253'402'300'799, 0}), "9999-12-31T23:59:59.000000000Z");
  EXPECT_EQ(iso_time({253'402'300'799, 1'000'000'000}), "");
  EXPECT_EQ(iso_time({-62'167'219'200, 0}), "0000-01-01T00:00:00.000000000Z");
  EXPECT_EQ(iso_time({-62'167'219'201, 0}), "");
  EXPECT_EQ(iso_time({std::numeric_limits<std::int64_t>::max(), 0}), "");
  EXPECT_EQ(iso_time({std::numeric_limits<std::int64_t>::min(), 0}), "");
}

}  // namespace
}  // namespace CT::Test
