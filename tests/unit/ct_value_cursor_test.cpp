// SPDX-License-Identifier: MIT
//
// Values that are written while they are read, against the same values decoded to a tape first.
#include "codetrace/model/ct_value_cursor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "awkward.h"
#include "codetrace/render/ct_value_text.h"
#include "tape_text.h"
#include "value_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

using Checkpoint::ValueCursor;
using Checkpoint::ValueRef;
using Checkpoint::ValueTape;
using Checkpoint::ValueTextWriter;
using Checkpoint::ValueType;
using Form = ValueTextWriter::Form;

class ValueInPlace : public ::testing::TestWithParam<ByteOrder> {};

INSTANTIATE_TEST_SUITE_P(BothOrders, ValueInPlace, ::testing::ValuesIn(both_orders));

ValueCursor all(ValueTrace& trace, std::uint32_t count) {
  return {trace.view().cursor(), count, &trace.file(), &trace.entities()};
}

// Each value behind a bar, as far as there is something of it.
std::string written_in_place(ValueTrace& trace, std::uint32_t count) {
  return written([&](Writer& out) {
    ValueTextWriter writer;
    ValueCursor values = all(trace, count);
    while (writer.write(values, out, Form::quoted, "|")) {
    }
  });
}

std::string written_from_tape(ValueTrace& trace, std::uint32_t count) {
  std::string text;
  Cursor cursor = trace.view().cursor();
  ValueTape tape;
  tape.reset(trace.view(), &trace.entities());
  for (; count != 0 && cursor.ok(); --count) {
    const ValueRef value(tape, tape.decode(cursor));
    if (cursor.ok() || value.type() == ValueType::array) text += "|" + tape_text(value).value();
  }
  return text;
}

TEST_P(ValueInPlace, ReadsAsFromATapeHoweverMuchOfItIsThere) {
  const ValueNames names(GetParam());
  Awkward random(1);
  for (int round = 0; round != 100; ++round) {
    Fields fields = random.value(random.below(12), true, names);
    fields.append(random.value(random.below(4), true, names));
    const std::size_t size = fields.encode(GetParam()).size();
    for (std::size_t keep = 1; keep <= size; keep += size / 100 + 1) {
      ValueTrace trace(names.trace, fields, keep);
      Cursor cursor = trace.view().cursor();
      Checkpoint::scan_values(cursor, 2, &trace.entities());
      ASSERT_EQ(written_in_place(trace, 2), written_from_tape(trace, 2)) << round << " " << keep;
    }
  }
}

TEST_P(ValueInPlace, AnArrayAsKeyHasAPairIfItIsWhole) {
  const Fields key = value::map({{value::list({value::integer(1)}), value::string("in")}});
  const Fields fields = value::map({{key, value::list({value::null()})}});
  const std::string whole = "|array(array(array(0 => 1) => \"in\") => array(0 => null))";
  const std::size_t size = fields.encode(GetParam()).size();
  for (std::size_t keep = 5; keep <= size; ++keep) {
    ValueTrace trace(GetParam(), fields, keep);
    const std::string text = written_in_place(trace, 1);
    ASSERT_EQ(text, written_from_tape(trace, 1)) << keep;
    if (keep == size) {
      EXPECT_EQ(text, whole);
    } else {
      EXPECT_TRUE(text == "|array()" ||
                  text.starts_with("|array(array(array(0 => 1) => \"in\") =>"))
          << text;
    }
  }
}

TEST_P(ValueInPlace, WhatFollowsTheCutMarkerIsSteppedOver) {
  const Fields cut = value::map({{value::integer(0), value::integer(1)},
                                 {value::cut_marker(), value::list({value::integer(2)})},
                                 {value::list({value::cut_marker()}), value::integer(3)}});
  ValueTrace trace(GetParam(), Fields(cut).append(value::string("next")));
  EXPECT_EQ(written_in_place(trace, 2), "|array(0 => 1, ...)|\"next\"");
}

TEST_P(ValueInPlace, NothingIsWrittenOfNothing) {
  ValueTrace trace(GetParam(), value::integer(1));
  ValueCursor none = all(trace, 0);
  EXPECT_EQ(none.next_type(), ValueType::undef);
  EXPECT_EQ(written([&](Writer& out) { EXPECT_FALSE(ValueTextWriter().write(none, out)); }), "");
  ValueCursor more = all(trace, 2);
  EXPECT_EQ(more.next_type(), ValueType::long_);
  const auto first = [&](Writer& out) { EXPECT_TRUE(ValueTextWriter().write(more, out)); };
  EXPECT_EQ(written(first), "1");
  EXPECT_EQ(more.next_type(), ValueType::undef);
  EXPECT_EQ(written([&](Writer& out) { EXPECT_FALSE(ValueTextWriter().write(more, out)); }), "");
}

TEST_P(ValueInPlace, AnArrayThatAFailedOutputLeftOpenIsForgotten) {
  struct Full final : Sink {
    bool write(std::string_view) override { return false; }
  };
  const std::vector<Fields> many(10'000, value::string("a text that fills what is buffered"));
  ValueTrace trace(GetParam(), value::list(many).append(value::boolean(true)));
  ValueTextWriter writer;
  ValueCursor values = all(trace, 1);
  Full full;
  StreamWriter out(full);
  EXPECT_TRUE(writer.write(values, out));
  EXPECT_FALSE(out.ok());
  ValueTrace other(GetParam(), value::list({value::null()}));
  ValueCursor next = all(other, 1);
  EXPECT_EQ(written([&](Writer& good) { writer.write(next, good); }), "array(0 => null)");
}

}  // namespace
}  // namespace CT::Test
