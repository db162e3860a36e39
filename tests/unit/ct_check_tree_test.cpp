// SPDX-License-Identifier: MIT
//
// Each code of a check that is about references, ADD DATA, and begins and ends; and what a defect
// says, where, and how many are listed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "checked.h"
#include "wrong_request.h"

namespace CT::Test {
namespace {

using Check::Code;
using Check::Result;
using testing::HasSubstr;
using Draft = CheckpointDraft;

class CheckTree : public testing::TestWithParam<ByteOrder> {
 protected:
  static void expect(const std::vector<Wrong>& files) {
    for (const Wrong& wrong : files) {
      const Result result = checked(built(wrong, GetParam()));
      EXPECT_EQ(codes_of(result), wrong.codes)
          << "file " << &wrong - files.data()
          << (result.defects.empty() ? "" : ": " + result.defects.front().what);
    }
  }
};

TEST_P(CheckTree, References) {
  const auto call = [](Ref function) {
    return [function](Request&) { return Draft::function_call(function); };
  };
  constexpr Ref outside = 0x7000'0000;
  expect({
      one_more("CT-REF-RANGE", [](Request&) { return Draft::user_event(outside, 1); }),
      one_more("CT-REF-RANGE", [](Request&) { return Draft::script_exit().location(outside, 1); }),
      // Its end finds no begin.
      one_call("CT-REF-RANGE CT-NO-BEGIN", call(outside)),
      one_call("CT-REF-NONE CT-NO-BEGIN", call(0)),
      one_call("CT-REF-RANGE",
               [](Request& it) {
                 return Draft::function_call(it.function, {value::object(outside, 1)});
               }),
      one_call("CT-REF-RANGE",
               [](Request& it) {
                 return Draft::function_call(it.function, {value::resource(outside, 1)});
               }),
      one_call("CT-REF-RANGE",
               [](Request& it) {
                 return Draft::function_call(
                     it.trace.function({.name = "f", .class_entry = outside}));
               }),
      one_more("CT-REF-MIDDLE",
               [](Request& it) {
                 return Draft::user_event(it.trace.text("barfoo"), 1)
                     .location(it.trace.text("barfoo") + 3, 1);
               }),
      one_more("CT-REF-MIDDLE", [](Request& it) { return Draft::user_event(it.function + 1, 1); }),
  });
}

TEST_P(CheckTree, AddData) {
  expect({
      one_more("", [](Request& it) { return Draft::user_event(it.trace.text("a"), 1); }),
      {"CT-UNUSED", [](Request& it) { it.trace.text("nobody"); }},
      {"CT-UNUSED", [](Request& it) { it.trace.klass({.name = "Nobody"}); }},
      // A few zeros align what comes next.
      {"", [](Request& it) { it.trace.add_data(Fields().raw(std::string(7, '\0'))); }},
      {"CT-UNUSED", [](Request& it) { it.trace.add_data(Fields().raw(std::string(50, '\0'))); }},
      one_call("CT-DESC-TYPE",
               [](Request& it) {
                 return Draft::function_call(it.trace.function({.type = 7, .name = "f"}));
               }),
      one_call("CT-OVERLAP",
               [](Request& it) {
                 return Draft::function_call(it.function, {value::object(it.function, 1)});
               }),
      // At the very end of ADD DATA.
      one_more("CT-TEXT-NUL",
               [](Request& it) {
                 const Ref last = it.trace.add_data(Fields().raw("no end"));
                 return Draft::user_event(last, 1);
               }),
      one_call("CT-DESC-END CT-UNUSED CT-NO-BEGIN",
               [](Request& it) {
                 const Ref last = it.trace.add_data(Fields().u8(1).raw(std::string(20, '\0')));
                 return Draft::function_call(last);
               }),
  });
}

TEST_P(CheckTree, BeginsAndEnds) {
  const auto end_of = [](auto start) {
    return [start](Request& it) { return Draft::function_return(start(it)); };
  };
  expect({
      one_more("CT-NO-END", [](Request& it) { return Draft::function_call(it.function); }),
      one_more("CT-NO-BEGIN", end_of([](Request&) { return Ref{0}; })),
      one_more("CT-NO-BEGIN", end_of([](Request&) { return Ref{0x7000'0000}; })),
      one_more("CT-NO-BEGIN", end_of([](Request& it) { return it.call + 1; })),
      one_more("CT-NO-BEGIN", end_of([](Request& it) { return it.startup; })),
      one_more("CT-NO-BEGIN", end_of([](Request& it) { return it.trace.data_end(); })),
      one_more("CT-NO-BEGIN", end_of([](Request& it) { return it.trace.data_end() + 100; })),
      {"CT-END-KIND", [](Request& it) { it.ended(Draft::include_call(it.text)); }},
      // This one is left out, so that the include has no end.
      {"CT-NO-END CT-END-KIND",
       [](Request& it) {
         it.trace.add(Draft::include_return(it.trace.add(Draft::function_call(it.function))));
       }},
      one_more("CT-STARTUP-TWICE", [](Request& it) { return Draft::startup(it.text); }),
      {"CT-AFTER-SHUTDOWN*2",
       {},
       [](Request& it) {
         it.trace.add(Draft::script_exit());
         it.trace.add(Draft::script_exit());
         return it.trace.build();
       }},
  });
}

TEST_P(CheckTree, WhatEndsTheTreeTellsHowMuchIsLost) {
  const Result twice = checked(built(
      {"",
       [](Request& it) {
         it.trace.add(Draft::function_return(it.trace.add(Draft::function_call(it.function))));
         it.trace.add(Draft::function_return(it.call));
         it.trace.add(Draft::script_exit());
       }},
      GetParam()));
  // The second end is the one that the request adds.
  ASSERT_EQ(codes_of(twice), "CT-END-TWICE");
  EXPECT_THAT(twice.defects[0].what, HasSubstr("FUNCTION_CALL at DATA+0x"));
  EXPECT_EQ(twice.defects[0].cost, "1 later checkpoint is left out by the reader");
  EXPECT_EQ(twice.reader.rejected, 2U);

  const Result late = checked(built({"",
                                     [](Request& it) {
                                       const Ref inner =
                                           it.trace.add(Draft::function_call(it.function));
                                       it.trace.add(Draft::function_return(it.call));
                                       it.trace.add(Draft::function_return(inner));
                                     }},
                                    GetParam()));
  ASSERT_EQ(codes_of(late), "CT-NO-END CT-END-LATE");
  EXPECT_EQ(late.defects[1].cost, "2 later checkpoints are left out by the reader");
}

TEST_P(CheckTree, RequestsWithoutBeginOrEnd) {
  TraceBuilder nothing(GetParam());
  EXPECT_EQ(codes_of(checked(nothing.build())), "CT-NO-STARTUP");
  TraceBuilder headless(GetParam());
  for (int i = 0; i != 3; ++i) headless.add(Draft::script_exit());
  const Result result = checked(headless.build());
  EXPECT_EQ(codes_of(result), "CT-NO-STARTUP");
  EXPECT_EQ(result.defects[0].cost, "the reader leaves out 3 checkpoints");
  headless.add(Draft::startup(headless.text("/")));
  EXPECT_EQ(codes_of(checked(headless.build())), "CT-BEFORE-STARTUP*3 CT-NO-SHUTDOWN");
}

TEST_P(CheckTree, TellsWhereAndListsSoManyOfEachKind) {
  Request request(GetParam());
  const std::uint64_t first = request.trace.data_size();
  for (int i = 0; i != 9; ++i) request.trace.add(Draft::user_event(0x7000'0000, 1).time(11));
  const std::string bytes = request.finish();
  const Result result = checked(bytes, {.limit = 4, .archive_damage = {}});
  EXPECT_EQ(codes_of(result), "CT-REF-RANGE*9");
  ASSERT_EQ(result.defects.size(), 4U);
  const Check::Defect& defect = result.defects[0];
  EXPECT_EQ(defect.spot.part, Check::Part::data);
  EXPECT_EQ(defect.spot.type, Checkpoint::Type::USER_EVENT);
  EXPECT_EQ(defect.spot.record, first);
  EXPECT_EQ(defect.spot.offset, first + 4 + 12);
  EXPECT_EQ(defect.file_offset, 36 + defect.spot.offset);
  EXPECT_EQ(checked(bytes, {.limit = 0, .archive_damage = {}}).defects.size(), 9U);
  EXPECT_EQ(codes_of(checked(bytes, {.limit = 4, .archive_damage = "it ends"})),
            "CT-ARCHIVE CT-REF-RANGE*9");
}

INSTANTIATE_TEST_SUITE_P(InBothOrders, CheckTree,
                         testing::Values(ByteOrder::little, ByteOrder::big),
                         [](const testing::TestParamInfo<ByteOrder>& order) {
                           return order.param == ByteOrder::big ? "Big" : "Little";
                         });

// The table of the page, a row for each code, in the order of the code.
TEST(CheckCodes, AreThoseOfTheDocumentation) {
  std::ifstream page(CODETRACE_ROOT "/docs/damaged-files.md");
  std::vector<std::string> rows;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("| `CT-")) rows.push_back(line);
  }
  std::vector<std::string> wanted;
  for (const Check::CodeInfo& info : Check::codes) {
    std::string row = "| `";
    row.append(info.name).append("` | ").append(level_name(info.level)).append(" | ");
    row.append(info.meaning).append(" | ").append(info.cost).append(" |");
    wanted.push_back(row);
  }
  EXPECT_EQ(rows, wanted);
}

}  // namespace
}  // namespace CT::Test
