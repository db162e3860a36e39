// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_records.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "open_trace.h"

namespace CT::Test {
namespace {

namespace Made = Checkpoint;
using Checkpoint::KVal;
using Checkpoint::Type;

std::string shown(const KVal& value) { return value.to_string(true).toStdString(); }

TEST(Records, OnlyShutdownAndExitAreValidWithoutPayload) {
  for (std::uint8_t type = 0; type != 18; ++type) {
    if (type == 16) continue;
    for (const ByteOrder order : both_orders) {
      TraceBuilder trace(order);
      trace.add(CheckpointDraft::raw(type).time(1).keep(0));
      OpenTrace open(trace);
      const auto record = open.record();
      const bool needs_none =
          record->type() == Type::SHUTDOWN || record->type() == Type::SCRIPT_EXIT;
      EXPECT_EQ(record->is_valid(), needs_none) << int{type};
      EXPECT_EQ(record->flags(), 0) << int{type};
      EXPECT_FALSE(record->damage()) << int{type};
    }
  }
}

TEST(StartupRecord, HasFourTextsInOrder) {
  for_both_orders("startup @1 url \"final\" uri \"first\" host \"h\" method \"GET\"",
                  [](OpenTrace& trace) {
                    const auto record = trace.record<Made::Startup>();
                    EXPECT_TRUE(record->is_valid());
                    EXPECT_EQ(text_of(record->url()), "final");
                    EXPECT_EQ(text_of(record->orig_uri()), "first");
                    EXPECT_EQ(text_of(record->host()), "h");
                    EXPECT_EQ(text_of(record->method()), "GET");
                    EXPECT_EQ(record->url().orig_sz, -1);
                  });
}

TEST(StartupRecord, WithFourReferencesOfZeroIsValidWithoutTexts) {
  for_both_orders("startup", [](OpenTrace& trace) {
    const auto record = trace.record<Made::Startup>();
    EXPECT_TRUE(record->is_valid());
    EXPECT_FALSE(record->damage());
    EXPECT_EQ(text_of(record->url()), "(absent)");
    EXPECT_EQ(text_of(record->orig_uri()), "(absent)");
    EXPECT_EQ(text_of(record->host()), "(absent)");
    EXPECT_EQ(text_of(record->method()), "(absent)");
  });
}

TEST(StartupRecord, EmptyTextIsPresentAsSuch) {
  for_both_orders("startup url \"\"", [](OpenTrace& trace) {
    EXPECT_EQ(text_of(trace.record<Made::Startup>()->url()), "");
  });
}

TEST(IncludeRecords, PathStartAndException) {
  for_both_orders(R"(
    i: include "a.php"
    include_return of i
    include_exception of i value "thrown"
  )",
                  [](OpenTrace& trace) {
                    const auto call = trace.record<Made::IncludeCall>(0);
                    EXPECT_EQ(text_of(call->include()), "a.php");
                    const auto address = std::bit_cast<std::uintptr_t>(call->checkpoint());
                    EXPECT_EQ(trace.record<Made::IncludeReturn>(1)->start(), address);
                    const auto thrown = trace.record<Made::IncludeException>(2);
                    EXPECT_EQ(thrown->start(), address);
                    EXPECT_EQ(shown(thrown->value()), "\"thrown\"");
                  });
}

TEST(EndRecords, StartIsRelocatedWhereverItLies) {
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order, 0x1000);
    for (const Ref start : {Ref{0x1000}, Ref{0x1005}, Ref{0xFFF}, Ref{0}, ~Ref{0}}) {
      trace.add(CheckpointDraft::sapi_write_end(start));
    }
    OpenTrace open(trace);
    const auto data = std::bit_cast<std::uintptr_t>(open.file().data().data());
    const auto start = [&](std::size_t number) {
      const auto record = open.record<Made::SapiWriteEnd>(number);
      EXPECT_TRUE(record->is_valid());
      return record->start();
    };
    EXPECT_EQ(start(0), data);
    EXPECT_EQ(start(1), data + 5);
    EXPECT_EQ(start(2), data - 1);
    EXPECT_EQ(start(3), 0U);
    EXPECT_EQ(start(4), data - 0x1001);
  }
}

TEST(SapiRecords, WrittenBodyMayBeCutAndHoldNuls) {
  for_both_orders("write \"a\\0b\"\nwrite cut(\"ab\", 10)\nwrite \"\"", [](OpenTrace& trace) {
    const auto whole = trace.record<Made::SapiWriteStart>(0);
    EXPECT_EQ(text_of(whole->body()), std::string("a\0b", 3));
    EXPECT_EQ(whole->body().orig_sz, 3);
    EXPECT_EQ(trace.record<Made::SapiWriteStart>(1)->body().orig_sz, 10);
    EXPECT_TRUE(trace.record<Made::SapiWriteStart>(1)->body().is_cut());
    EXPECT_EQ(text_of(trace.record<Made::SapiWriteStart>(2)->body()), "");
  });
}

TEST(SapiRecords, HeaderOperationsBelowThreeHaveALine) {
  for (std::uint8_t op = 0; op != 9; ++op) {
    for (const ByteOrder order : both_orders) {
      TraceBuilder trace(order);
      trace.add(CheckpointDraft::sapi_header(op, Fields().cut_string("X: 1", 9)));
      OpenTrace open(trace);
      const auto record = open.record<Made::SapiHeader>();
      EXPECT_TRUE(record->is_valid());
      EXPECT_EQ(record->op(), op);
      EXPECT_EQ(record->has_known_op(), op <= 4);
      EXPECT_EQ(record->has_header_line(), op <= 2);
      EXPECT_EQ(text_of(record->header()), op <= 2 ? "X: 1" : "(absent)");
      EXPECT_EQ(record->header().orig_sz, op <= 2 ? 9 : -1);
    }
  }
}

TEST(SapiRecords, CheckpointFollowsDirectlyBehindAnOperationWithoutLine) {
  for_both_orders("header 3\nheader 7\nexit", [](OpenTrace& trace) {
    EXPECT_EQ(trace.view(0).size(), 1U);
    EXPECT_FALSE(trace.record(0)->damage());
    EXPECT_EQ(trace.record<Made::SapiHeader>(1)->op(), 7);
    EXPECT_FALSE(trace.record(1)->damage());
    EXPECT_EQ(trace.record(2)->type(), Type::SCRIPT_EXIT);
  });
}

TEST(SapiRecords, SentHeadersHaveCodeAndStatusLine) {
  for_both_orders("send_headers 404 \"HTTP/1.1 404\"\nsend_headers 4294967295",
                  [](OpenTrace& trace) {
                    const auto first = trace.record<Made::SapiSendHeaders>(0);
                    EXPECT_EQ(first->code(), 404U);
                    EXPECT_EQ(text_of(first->status()), "HTTP/1.1 404");
                    EXPECT_EQ(first->status().orig_sz, -1);
                    const auto second = trace.record<Made::SapiSendHeaders>(1);
                    EXPECT_EQ(second->code(), UINT32_MAX);
                    EXPECT_EQ(text_of(second->status()), "(absent)");
                    EXPECT_FALSE(second->damage());
                  });
}

TEST(SapiRecords, StatusLineEndsAtItsFirstNul) {
  for_both_orders("raw 13 more u32(200) u64(5) bytes(\"ab\\0cd\\0\")", [](OpenTrace& trace) {
    const auto record = trace.record<Made::SapiSendHeaders>();
    EXPECT_EQ(text_of(record->status()), "ab");
    EXPECT_FALSE(record->damage());
  });
}

TEST(SapiRecords, FlushNeedsAPayloadAndReadsNothing) {
  for_both_orders("flush\nflush keep 0\nraw @1 11", [](OpenTrace& trace) {
    EXPECT_TRUE(trace.record<Made::SapiFlush>(0)->is_valid());
    EXPECT_FALSE(trace.record<Made::SapiFlush>(1)->is_valid());
    EXPECT_TRUE(trace.record<Made::SapiFlush>(2)->is_valid());
    EXPECT_FALSE(trace.record(2)->damage());
  });
}

TEST(ScriptRecords, ErrorHasNumberAndMessage) {
  for_both_orders("error 8 \"bad\"\nerror 4294967295\nexit", [](OpenTrace& trace) {
    const auto first = trace.record<Made::ScriptError>(0);
    EXPECT_EQ(first->error_num(), 8U);
    EXPECT_EQ(text_of(first->error_message()), "bad");
    const auto second = trace.record<Made::ScriptError>(1);
    EXPECT_EQ(second->error_num(), UINT32_MAX);
    EXPECT_EQ(text_of(second->error_message()), "(absent)");
    EXPECT_TRUE(trace.record<Made::ScriptExit>(2)->is_valid());
  });
}

TEST(UserEventRecord, HasNameAndSequence) {
  for_both_orders("event @1 \"Slow\" sequence 4294967295\nevent none sequence 1",
                  [](OpenTrace& trace) {
                    const auto first = trace.record<Made::UserEvent>(0);
                    EXPECT_EQ(text_of(first->event_name()), "Slow");
                    EXPECT_EQ(first->event_sequence(), UINT32_MAX);
                    const auto second = trace.record<Made::UserEvent>(1);
                    EXPECT_EQ(text_of(second->event_name()), "(absent)");
                    EXPECT_EQ(second->event_sequence(), 1U);
                  });
}

TEST(EndRecords, ReturnedAndThrownValues) {
  for_both_orders(
      R"(
    F: function user "f"
    c: call fn F
    return of c value [1, "k" => cut("ab", 9)]
    exception of c value obj(none, 7)
    return of c value undef
  )",
      [](OpenTrace& trace) {
        const auto returned = trace.record<Made::FunctionReturn>(1);
        const auto address = std::bit_cast<std::uintptr_t>(trace.record(0)->checkpoint());
        EXPECT_EQ(returned->start(), address);
        EXPECT_EQ(shown(returned->value()), "array(0 => 1, \"k\" => \"ab**CUT**\")");
        const auto thrown = trace.record<Made::FunctionException>(2);
        EXPECT_EQ(thrown->start(), address);
        EXPECT_EQ(shown(thrown->value()), "object(!unknown!#7)");
        EXPECT_EQ(trace.record<Made::FunctionReturn>(3)->value().type(), Made::ValueType::undef);
      });
}

}  // namespace
}  // namespace CT::Test
