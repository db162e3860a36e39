// SPDX-License-Identifier: MIT
//
// What a reading found: as data, counted, as text.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "codetrace/tree/ct_diagnostics.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

class Keeper final : public FindingSink {
 public:
  void report(const Finding& finding) override { findings.push_back(finding); }
  std::vector<Finding> findings;
};

// records, skipped, damaged, rejected, repaired, and "broken".
std::string shown(const Summary& summary) {
  return std::to_string(summary.records) + ' ' + std::to_string(summary.skipped) + ' ' +
         std::to_string(summary.damaged) + ' ' + std::to_string(summary.rejected) + ' ' +
         std::to_string(summary.repaired) + (summary.is_broken ? " broken" : "");
}

void expect_summary(std::string_view text, std::string_view expected) {
  SCOPED_TRACE(text);
  for_both_orders(text, [&](OpenTrace& trace) {
    trace.read();
    EXPECT_EQ(shown(trace.storage().summary()), expected);
    EXPECT_EQ(trace.storage().summary().is_clean(), expected.substr(1) == " 0 0 0 0");
  });
}

TEST(Summary, CountsRecordsValidOrNot) {
  expect_summary("", "0 0 0 0 0");
  expect_summary("startup\nexit\nshutdown", "3 0 0 0 0");
  expect_summary("startup\nflush keep 0\ncall fn none\nshutdown", "4 0 0 0 0");
}

TEST(Summary, CountsWhatIsNotDecoded) {
  expect_summary("startup\nraw 16\nraw 18\nraw 31 more u8(1)\nshutdown", "2 3 0 0 0");
}

TEST(Summary, CountsDamagedRecords) {
  expect_summary("startup\nerror 8 \"abc\" keep 14\nexit @1 keep 11\nshutdown", "4 0 2 0 0");
}

TEST(Summary, CountsRejectedAndRepaired) {
  expect_summary("exit\nstartup\nstartup\nwrite_end of 1\nshutdown\nflush", "6 0 0 4 0");
  expect_summary("startup\ni: include \"x\"\nw: write \"\"\ninclude_return of i\nshutdown",
                 "5 0 0 0 1");
  expect_summary("startup\nw: write \"\"\ninclude_return of w", "3 0 0 1 0");
  // The second end finds its node closed: a repair that fails.
  expect_summary("startup\nw: write \"\"\nwrite_end of w\nwrite_end of w\nexit", "5 0 0 2 1");
}

TEST(Summary, KnowsThatDataEndsTooEarly) {
  expect_summary("startup\nexit\ndata hex(ff ff ff)", "2 0 0 0 0 broken");
  expect_summary("startup\nwrite \"abcdef\" size 100", "1 0 0 0 0 broken");
}

TEST(Summary, EveryEffectMakesItUnclean) {
  EXPECT_TRUE(Summary().is_clean());
  for (const FindingInfo& info : findings) {
    Summary summary;
    summary.count(info.effect);
    EXPECT_FALSE(summary.is_clean());
  }
  Summary read;
  read.records = 5;
  EXPECT_TRUE(read.is_clean());
}

TEST(Findings, TellWhatAndWhere) {
  for_both_orders(
      "startup\nw: write \"\"\ni: include \"x\"\nraw 20\nwrite_end of w\nflush keep 0\n"
      "error 8 \"abc\" keep 14\ndata hex(ff)",
      [](OpenTrace& trace) {
        Keeper keeper;
        Storage storage(trace.file(), &keeper);
        read_checkpoints(trace.file(), storage);
        ASSERT_EQ(keeper.findings.size(), 4U);
        const Finding& skipped = keeper.findings[0];
        EXPECT_EQ(skipped.kind, Finding::Kind::unknown_code);
        EXPECT_EQ(skipped.offset, trace.view(3).offset());
        EXPECT_EQ(skipped.type, Checkpoint::Type::INVALID);
        const Finding& inner = keeper.findings[1];
        EXPECT_EQ(inner.kind, Finding::Kind::not_innermost);
        EXPECT_EQ(inner.type, Checkpoint::Type::SAPI_WRITE_END);
        EXPECT_EQ(inner.offset, trace.view(4).offset());
        EXPECT_EQ(inner.node, 1);
        EXPECT_EQ(inner.node_type, Node::Type::SAPI_WRITE);
        const Finding& damaged = keeper.findings[2];
        EXPECT_EQ(damaged.kind, Finding::Kind::damaged_record);
        EXPECT_EQ(damaged.offset, trace.view(6).offset());
        EXPECT_EQ(damaged.first, 12U);
        EXPECT_EQ(damaged.second, 14U);
        const Finding& broken = keeper.findings[3];
        EXPECT_EQ(broken.kind, Finding::Kind::broken_header_word);
        EXPECT_EQ(broken.offset, trace.file().data().size() - 1);
        EXPECT_EQ(broken.first, 4U);
        EXPECT_EQ(broken.second, 1U);
        for (const Finding& finding : keeper.findings) {
          EXPECT_NE(std::string(finding.source_file), "");
          EXPECT_GT(finding.source_line, 0);
        }
      });
}

TEST(Findings, WithoutASinkAreCountedAllTheSame) {
  for_both_orders("exit\nstartup\nraw 20\nshutdown", [](OpenTrace& trace) {
    Storage storage(trace.file());
    read_checkpoints(trace.file(), storage);
    EXPECT_EQ(shown(storage.summary()), "3 1 0 1 0");
  });
}

TEST(Findings, SinkIsLeftAloneOnceItIsForgotten) {
  for_both_orders("exit\nstartup\nshutdown\nexit", [](OpenTrace& trace) {
    Keeper keeper;
    Storage storage(trace.file(), &keeper);
    EXPECT_EQ(storage.add_checkpoint(*trace.record(0)), Storage::no_node);
    storage.forget_sink();
    EXPECT_EQ(storage.add_checkpoint(*trace.record(0)), Storage::no_node);
    EXPECT_EQ(keeper.findings.size(), 1U);
    EXPECT_EQ(storage.summary().rejected, 2U);
  });
}

TEST(Findings, OfARichTraceAreAsTheSummaryCounts) {
  for (const ByteOrder order : both_orders) {
    OpenTrace trace(rich_trace(order));
    trace.read();
    const Summary& summary = trace.storage().summary();
    EXPECT_EQ(trace.findings().size(),
              summary.skipped + summary.damaged + summary.rejected + summary.repaired);
    EXPECT_FALSE(summary.is_broken);
  }
}

}  // namespace
}  // namespace CT::Test
