// SPDX-License-Identifier: MIT
//
// What a summary says of headers that came when the others were already on their way.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "open_trace.h"
#include "tools/cttool/ct_summary_section.h"

namespace CT::Test {
namespace {

constexpr std::string_view late_headers =
    "startup\n"
    "w: write \"<html>\"\n"
    "send_headers 200\n"
    "write_end of w\n"
    "header 0 \"Location: /login\"\n"
    "header 0 \"X-A: 1\"\n";

Trace opened(const std::string& bytes) {
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size())) << trace.error_message();
  return trace;
}

TEST(SummaryHeaders, SaysWhichCameTooLateAndWhatSentTheOthers) {
  for (const BuiltTrace& built : build_traces(late_headers)) {
    const Trace trace = opened(built.bytes);
    const Tool::SummaryFacts facts(trace, Tool::SummaryFacts::Of::all);
    const Tool::SectionText text = Tool::headers_text(facts, {});
    EXPECT_THAT(text.title, testing::HasSubstr("Output before headers: 2 lost; they were sent by"));
    EXPECT_THAT(text.title, testing::HasSubstr("the first output is #1"));
    EXPECT_THAT(text.lines, testing::ElementsAre(testing::HasSubstr("Location: /login"),
                                                 testing::HasSubstr("X-A: 1")));
  }
}

TEST(SummaryHeaders, SaysNothingWhereAllWereInTime) {
  const std::string bytes = build_traces(
                                "startup\n"
                                "header 0 \"X-A: 1\"\n"
                                "w: write \"a\"\n"
                                "send_headers 200\n"
                                "write_end of w\n")
                                .front()
                                .bytes;
  const Trace trace = opened(bytes);
  const Tool::SummaryFacts facts(trace, Tool::SummaryFacts::Of::all);
  EXPECT_THAT(Tool::headers_text(facts, {}).lines, testing::IsEmpty());
}

}  // namespace
}  // namespace CT::Test
