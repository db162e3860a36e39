// SPDX-License-Identifier: MIT
//
// What the client got: each rule of header operations on the smallest trace that needs it.
#include "ctmeasure/ct_response.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "open_trace.h"

namespace CT::Test {
namespace {

Trace opened(std::string_view bytes) {
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size())) << trace.error_message();
  return trace;
}

std::string word_of(HeaderStep::Fate fate) {
  constexpr std::array words = {"sent",     "replaced",  "deleted",  "applied",
                                "too late", "not whole", "not an op"};
  return words.at(static_cast<std::size_t>(fate));
}

// An operation a line: its line, what became of it, and by whom.
std::string steps(std::string_view text) {
  std::string first;
  for (const BuiltTrace& built : build_traces(text)) {
    const Trace trace = opened(built.bytes);
    const Response response(trace);
    std::string lines;
    for (const HeaderStep& step : response.steps()) {
      lines += std::to_string(step.id) + " " + std::string(step.line.view()) +
               (step.line.is_cut() ? "..." : "") + (step.is_status ? " (status)" : "") + " " +
               word_of(step.fate);
      if (step.ended_by != Storage::no_node) lines += " by " + std::to_string(step.ended_by);
      lines += "\n";
    }
    if (first.empty()) first = lines;
    EXPECT_EQ(lines, first);
  }
  return first;
}

// Code, status line, the node that set it and the one that sent it.
std::string status(std::string_view text) {
  const Trace trace = opened(build_traces(text).front().bytes);
  const Response response(trace);
  std::string line = response.status() ? std::to_string(*response.status()) : "-";
  line += " '" + std::string(response.status_line().view()) + "'";
  line += " " + std::to_string(response.status_set_by());
  return line + " " + std::to_string(response.sent_by());
}

TEST(Response, ReplacingEndsAllHeadersOfThatName) {
  EXPECT_EQ(steps("startup\n"
                  "header 1 \"A: 1\"\n"
                  "header 1 \"B: 2\"\n"
                  "header 1 \"a : 3\"\n"
                  "header 0 \"A:4\"\n"
                  "header 1 \"A: 5\"\n"),
            "1 A: 1 replaced by 4\n"
            "2 B: 2 sent\n"
            "3 a : 3 replaced by 4\n"
            "4 A:4 sent\n"
            "5 A: 5 sent\n");
}

TEST(Response, DeletingTakesNamesWithoutRegardToCapitals) {
  EXPECT_EQ(steps("startup\n"
                  "header 0 \"Set-Cookie: 1\"\n"
                  "header 1 \"SET-COOKIE: 2\"\n"
                  "header 1 \"Set-Cookie2: 3\"\n"
                  "header 2 \"set-cookie\"\n"
                  "header 2 \"missing\"\n"),
            "1 Set-Cookie: 1 deleted by 4\n"
            "2 SET-COOKIE: 2 deleted by 4\n"
            "3 Set-Cookie2: 3 sent\n"
            "4 set-cookie applied\n"
            "5 missing applied\n");
}

TEST(Response, DeletingAllLeavesTheStatus) {
  EXPECT_EQ(steps("startup\n"
                  "header 0 \"HTTP/1.1 404 Not Found\"\n"
                  "header 0 \"A: 1\"\n"
                  "header 0 \"no colon\"\n"
                  "header 3\n"
                  "header 0 \"B: 1\"\n"),
            "1 HTTP/1.1 404 Not Found (status) sent\n"
            "2 A: 1 deleted by 4\n"
            "3 no colon deleted by 4\n"
            "4  applied\n"
            "5 B: 1 sent\n");
}

TEST(Response, LinesWithoutColonAreNeverReplaced) {
  EXPECT_EQ(steps("startup\n"
                  "header 0 \"A\"\n"
                  "header 0 \"A\"\n"
                  "header 2 \"A\"\n"
                  "header 0 \": 1\"\n"
                  "header 0 \": 2\"\n"
                  "header 2 \"\"\n"),
            "1 A sent\n2 A sent\n3 A applied\n4 : 1 sent\n5 : 2 sent\n6  applied\n");
}

TEST(Response, ALaterStatusReplacesTheEarlier) {
  EXPECT_EQ(steps("startup\n"
                  "header 0 \"HTTP/1.1 404 Not Found\"\n"
                  "header 4\n"
                  "header 0 \"http/1.0 500\"\n"),
            "1 HTTP/1.1 404 Not Found (status) replaced by 2\n"
            "2  (status) replaced by 3\n"
            "3 http/1.0 500 (status) sent\n");
}

TEST(Response, WhatComesAfterSendingIsTooLate) {
  EXPECT_EQ(steps("startup\n"
                  "header 0 \"A: 1\"\n"
                  "send_headers 200\n"
                  "header 0 \"A: 2\"\n"
                  "header 3\n"
                  "send_headers 500\n"
                  "header 4\n"),
            "1 A: 1 sent\n3 A: 2 too late\n4  too late\n6  too late\n");
}

TEST(Response, UnknownOperationsAndCutLinesAreTold) {
  EXPECT_EQ(steps("startup\n"
                  "header 7\n"
                  "header 0 cut(\"Location: http\", 900)\n"
                  "header 0 cut(\"Loc\", 900)\n"
                  "header 0 \"location: x\"\n"),
            "1  not an op\n"
            "2 Location: http... replaced by 4\n"
            "3 Loc... sent\n"
            "4 location: x sent\n");
}

TEST(Response, TheRecordOfSendingTellsTheStatus) {
  EXPECT_EQ(
      status("startup\nheader 0 \"HTTP/1.1 404 Gone away\"\nsend_headers 404 \"HTTP/1.1 404\"\n"),
      "404 'HTTP/1.1 404' 1 2");
  EXPECT_EQ(status("startup\nheader 0 \"HTTP/1.1 404 Gone away\"\nsend_headers 404\n"),
            "404 'HTTP/1.1 404 Gone away' 1 2");
  EXPECT_EQ(status("startup\nheader 0 \"HTTP/1.1 404 Gone away\"\nsend_headers 500\n"),
            "500 '' 1 2");
  EXPECT_EQ(status("startup\nheader 4\nsend_headers 203\n"), "203 '' 1 2");
  EXPECT_EQ(status("startup\nsend_headers 200\n"), "200 '' -1 1");
  EXPECT_EQ(status("startup\nsend_headers 4294967295\nsend_headers 200\n"), "-1 '' -1 1");
}

TEST(Response, WithoutThatRecordAStatusLineTellsIt) {
  EXPECT_EQ(status("startup\nheader 0 \"HTTP/1.1 404 Gone away\"\n"),
            "404 'HTTP/1.1 404 Gone away' 1 -1");
  EXPECT_EQ(status("startup\nheader 0 \"HTTP/1.1 404 x\"\nheader 4\n"), "- '' 2 -1");
  EXPECT_EQ(status("startup\nheader 0 \"HTTP/1.1\"\n"), "- 'HTTP/1.1' 1 -1");
  EXPECT_EQ(status("startup\n"), "- '' -1 -1");
}

TEST(Response, SomeHeadersBringAStatusWithThem) {
  EXPECT_EQ(status("startup\nheader 0 \"LOCATION: /\"\nsend_headers 302\n"), "302 '' 1 2");
  EXPECT_EQ(status("startup\nheader 0 \"Location: /\"\nsend_headers 200\n"), "200 '' -1 2");
  EXPECT_EQ(status("startup\nheader 0 \"WWW-Authenticate: Basic\"\nsend_headers 401\n"),
            "401 '' 1 2");
}

TEST(Response, HeadersAreListedInTheOrderOfSending) {
  const Trace trace = opened(build_traces("startup\n"
                                          "header 0 \"A: 1\"\n"
                                          "header 0 \"HTTP/1.1 200\"\n"
                                          "header 0 \"B: 2\"\n"
                                          "header 0 \"a: 3\"\n")
                                 .front()
                                 .bytes);
  std::string lines;
  for (const HeaderStep& header : Response(trace).headers()) {
    lines += std::string(header.line.view()) + "\n";
  }
  EXPECT_EQ(lines, "B: 2\na: 3\n");
}

TEST(Response, WritesAreCountedWithWhatWasCut) {
  for (const BuiltTrace& built : build_traces("startup\n"
                                              "a: write \"abc\"\n"
                                              "write_end of a\n"
                                              "b: write cut(\"de\", 10)\n"
                                              "write_end of b\n"
                                              "c: write \"\"\n"
                                              "d: write \"f\"\n")) {
    const Trace trace = opened(built.bytes);
    const Response response(trace);
    ASSERT_EQ(response.writes().size(), 4U);
    std::string lines;
    for (const BodyPart& part : response.writes()) {
      lines += std::to_string(part.id) + " " + std::to_string(part.offset) + " " +
               std::to_string(part.size()) + " " + std::to_string(part.missing()) + "\n";
    }
    EXPECT_EQ(lines, "1 0 3 0\n2 3 10 8\n3 5 0 0\n4 5 1 0\n");
    EXPECT_EQ(response.bytes_out(), 14U);
    EXPECT_EQ(response.bytes_recorded(), 6U);
    EXPECT_EQ(response.cut_writes(), 1U);
    EXPECT_FALSE(response.is_empty());
  }
}

TEST(Response, ARequestThatSaysNothingIsEmpty) {
  const Trace trace = opened(build_traces("startup\nexit\n").front().bytes);
  EXPECT_TRUE(Response(trace).is_empty());
  EXPECT_TRUE(Response(Trace()).is_empty());
}

TEST(Response, NamesAndValuesAreTakenApart) {
  EXPECT_EQ(header_name(" Content-Type \t: text/html "), "Content-Type");
  EXPECT_EQ(header_value(" Content-Type: text/html; a:b \r\n"), "text/html; a:b");
  EXPECT_EQ(header_name("none"), "");
  EXPECT_EQ(header_value("none "), "none");
  EXPECT_EQ(header_value("a:"), "");
}

// Each operation costs what it ends, however many others there are.
TEST(Response, ManyOperationsTakeLinearTime) {
  TraceBuilder builder;
  builder.add(CheckpointDraft::startup());
  constexpr int count = 200'000;
  for (int i = 0; i != count; ++i) {
    builder.add(
        CheckpointDraft::sapi_header(1, Fields().cut_string("N" + std::to_string(i) + ": 1")));
  }
  for (int i = 0; i != count; ++i) builder.add(CheckpointDraft::sapi_header(3));
  const Trace trace = opened(builder.build());
  const Response response(trace);
  EXPECT_EQ(response.steps().size(), 2U * count);
  EXPECT_TRUE(response.headers().empty());
  EXPECT_EQ(response.steps().front().ended_by, count + 1);
}

}  // namespace
}  // namespace CT::Test
