// SPDX-License-Identifier: MIT
//
// Values item by item: the bytes of the tests' own builder, with and without limits.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "small_stack.h"
#include "trace_builder.h"
#include "written_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Type;
using Write::Limits;
using Write::TraceWriter;
using WriteValues = std::function<void(TraceWriter&)>;

constexpr Ref function = 0x2000'0008;

// A call with these arguments, from both.
void expect_arguments(const std::vector<Fields>& expected, const WriteValues& write,
                      Limits limits = {}) {
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    TraceBuilder builder(order);
    builder.add(CheckpointDraft::function_call(function, expected));
    TraceWriter writer(options_of(order, limits));
    writer.begin(Type::FUNCTION_CALL);
    writer.reference(function);
    write(writer);
    EXPECT_TRUE(writer.end()) << Write::describe(writer.error());
    EXPECT_EQ(finished(writer), builder.build());
  }
}

TEST(WriteValues, OneOfEachKind) {
  constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
  expect_arguments({value::undef(), value::null(), value::boolean(false), value::boolean(true),
                    value::integer(lowest), value::real(-0.1), value::string("s"),
                    value::string(""), value::cut_string("ab", 3), value::object(0x2000'0020, 7),
                    value::resource(0x2000'0000, ~std::uint64_t{0}), value::list({})},
                   [](TraceWriter& writer) {
                     writer.undef();
                     writer.null();
                     writer.boolean(false);
                     writer.boolean(true);
                     writer.integer(lowest);
                     writer.real(-0.1);
                     writer.string("s");
                     writer.string({});
                     writer.string("ab", 3);
                     writer.object(0x2000'0020, 7);
                     writer.resource(0x2000'0000, -1);
                     writer.begin_array();
                     writer.end_array();
                   });
}

TEST(WriteValues, NoArguments) {
  expect_arguments({}, [](TraceWriter&) {});
  expect_arguments({}, [](TraceWriter& writer) { writer.arguments(); });
}

TEST(WriteValues, MethodsHaveTheirObjectFirst) {
  TraceBuilder builder;
  builder.add(CheckpointDraft::method_call(function, value::list({value::integer(1)}),
                                           {value::null(), value::null()}));
  TraceWriter writer(options_of(ByteOrder::little));
  writer.begin(Type::METHOD_CALL);
  writer.reference(function);
  writer.begin_array();
  writer.integer(0);
  writer.integer(1);
  writer.end_array();
  writer.null();
  writer.null();
  ASSERT_TRUE(writer.end());
  EXPECT_EQ(finished(writer), builder.build());
}

TEST(WriteValues, ArraysWithinEachOtherAndAsKeys) {
  const Fields inner = value::map({{value::string("k"), value::list({value::null()})}});
  expect_arguments({value::map({{value::integer(0), inner}, {inner, value::integer(1)}})},
                   [](TraceWriter& writer) {
                     const auto write_inner = [&] {
                       writer.begin_array();
                       writer.string("k");
                       writer.begin_array();
                       writer.integer(0);
                       writer.null();
                       writer.end_array();
                       writer.end_array();
                     };
                     writer.begin_array();
                     writer.integer(0);
                     write_inner();
                     write_inner();
                     writer.integer(1);
                     writer.end_array();
                   });
}

TEST(WriteValues, AsDeepAsAPayloadCanBe) {
  // An array of one list is its code, its count, and the key of what lies in it.
  constexpr std::size_t depth = (16'777'215 - 12 - 1) / 14;
  expect_arguments({value::nest(depth, value::null())}, [](TraceWriter& writer) {
    on_small_stack([&] {
      for (std::size_t i = 0; i != depth; ++i) {
        writer.begin_array();
        writer.integer(0);
      }
      writer.null();
      for (std::size_t i = 0; i != depth; ++i) writer.end_array();
    });
  });
}

TEST(WriteValues, MarkersSayWhatWasNotKept) {
  expect_arguments({value::map({{value::cut_marker(), value::null()}}),
                    value::map({{value::integer(0), value::cut_marker()},
                                {value::integer(1), value::integer(5)},
                                {value::cut_marker(), value::null()}})},
                   [](TraceWriter& writer) {
                     writer.cut_array();
                     writer.begin_array();
                     writer.integer(0);
                     writer.cut_array();
                     writer.integer(1);
                     writer.integer(5);
                     EXPECT_FALSE(writer.is_dropping());
                     writer.cut_rest();
                     EXPECT_TRUE(writer.is_dropping());
                     writer.string("dropped");
                     writer.begin_array();
                     writer.end_array();
                     writer.cut_array();
                     writer.cut_rest();
                     writer.end_array();
                   });
}

TEST(WriteLimits, StringsKeepTheirSize) {
  const auto cut = [](std::string_view text, std::uint32_t limit) {
    TraceWriter writer(options_of(ByteOrder::little, {.string_bytes = limit}));
    writer.begin(Type::SAPI_WRITE_START);
    writer.cut_text(text);
    EXPECT_TRUE(writer.end());
    return finished(writer);
  };
  const auto expected = [](std::string_view kept, std::uint32_t size) {
    TraceBuilder builder;
    const Fields text =
        kept.size() == size ? Fields().cut_string(kept) : Fields().cut_string(kept, size);
    builder.add(CheckpointDraft::sapi_write_start(text));
    return builder.build();
  };
  EXPECT_EQ(cut("abcd", 4), expected("abcd", 4));
  EXPECT_EQ(cut("abcde", 4), expected("abcd", 5));
  EXPECT_EQ(cut("abcde", 0), expected("", 5));
  EXPECT_EQ(cut("", 0), expected("", 0));
  // Not within a character: two, three and four bytes.
  EXPECT_EQ(cut("ab\xC3\xA4x", 3), expected("ab", 5));
  EXPECT_EQ(cut("ab\xC3\xA4x", 4), expected("ab\xC3\xA4", 5));
  EXPECT_EQ(cut("a\xE2\x82\xACx", 3), expected("a", 5));
  EXPECT_EQ(cut("\xF0\x9F\x98\x80x", 3), expected("", 5));
  EXPECT_EQ(cut("\xF0\x9F\x98\x80x", 4), expected("\xF0\x9F\x98\x80", 5));
  // Where there are no characters.
  EXPECT_EQ(cut("\x80\x80\x80\x80\x80\x80", 5), expected("\x80\x80\x80\x80\x80", 6));
}

TEST(WriteLimits, SizesThatDoNotFitAreTheLargest) {
  expect_arguments({value::cut_string("a", 0x7FFF'FFFF), value::cut_string("b", 0x7FFF'FFFF)},
                   [](TraceWriter& writer) {
                     writer.string("a", 0x8000'0000);
                     writer.string("b", std::numeric_limits<std::uint64_t>::max());
                   });
}

TEST(WriteLimits, HeaderLinesAreCutToo) {
  TraceBuilder builder;
  builder.add(CheckpointDraft::sapi_header(1, Fields().cut_string("X-", 6)));
  TraceWriter writer(options_of(ByteOrder::little, {.string_bytes = 2}));
  writer.begin(Type::SAPI_HEADER);
  writer.header_line(1, "X-A: b");
  ASSERT_TRUE(writer.end());
  EXPECT_EQ(finished(writer), builder.build());
}

// A list of so many integers, the value of each its key.
void write_list(TraceWriter& writer, std::int64_t count) {
  writer.begin_array();
  for (std::int64_t i = 0; i != count; ++i) {
    writer.integer(i);
    writer.integer(i);
  }
  writer.end_array();
}

TEST(WriteLimits, ArraysEndWithAMarker) {
  const value::Pair first = {value::integer(0), value::integer(0)};
  const value::Pair second = {value::integer(1), value::integer(1)};
  const value::Pair marker = {value::cut_marker(), value::null()};
  expect_arguments({value::list({}), value::map({first, second}),
                    value::map({first, second, marker}), value::map({first, second, marker})},
                   [](TraceWriter& writer) {
                     for (const std::int64_t count : {0, 2, 3, 1000}) write_list(writer, count);
                   },
                   {.array_elements = 2});
  expect_arguments({value::list({}), value::map({marker})},
                   [](TraceWriter& writer) {
                     write_list(writer, 0);
                     write_list(writer, 1);
                   },
                   {.array_elements = 0});
}

TEST(WriteLimits, WhatIsDroppedMayHoldArrays) {
  expect_arguments(
      {value::map({{value::integer(0), value::null()}, {value::cut_marker(), value::null()}}),
       value::integer(9)},
      [](TraceWriter& writer) {
        writer.begin_array();
        writer.integer(0);
        writer.null();
        for (int pair = 0; pair != 3; ++pair) {
          writer.string("key");
          writer.begin_array();
          EXPECT_TRUE(writer.is_dropping());
          writer.integer(0);
          write_list(writer, 3);
          writer.end_array();
        }
        writer.end_array();
        EXPECT_FALSE(writer.is_dropping());
        writer.integer(9);
      },
      {.array_elements = 1});
}

TEST(WriteLimits, DeepArraysAreMarkers) {
  const WriteValues nested = [](TraceWriter& writer) {
    for (int i = 0; i != 4; ++i) {
      writer.begin_array();
      writer.integer(0);
    }
    writer.null();
    for (int i = 0; i != 4; ++i) writer.end_array();
    writer.integer(9);
  };
  const Fields marker = value::cut_marker();
  const Fields nine = value::integer(9);
  expect_arguments({value::nest(4, value::null()), nine}, nested, {.depth = 4});
  expect_arguments({value::nest(3, marker), nine}, nested, {.depth = 3});
  expect_arguments({value::list({marker}), nine}, nested, {.depth = 1});
  // Without an array around it the marker needs one of its own.
  expect_arguments({value::map({{marker, value::null()}}), nine}, nested, {.depth = 0});
}

TEST(WriteLimits, TheMarkerIsNotCut) {
  expect_arguments({value::list({value::cut_marker()})},
                   [](TraceWriter& writer) {
                     writer.begin_array();
                     writer.integer(0);
                     writer.begin_array();
                     writer.end_array();
                     writer.end_array();
                   },
                   {.string_bytes = 1, .depth = 1});
}

}  // namespace
}  // namespace CT::Test
