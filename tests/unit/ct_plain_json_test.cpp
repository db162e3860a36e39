// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_plain_json.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <limits>
#include <string>

#include "awkward.h"
#include "value_names.h"
#include "value_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

using Checkpoint::PlainJsonWriter;
using Checkpoint::ValueTape;
using Form = JsonWriter::Form;

class PlainJson : public ::testing::TestWithParam<ByteOrder> {
 protected:
  static std::string json(const TraceBuilder& trace, const Fields& fields) {
    ValueTrace values(trace, fields);
    Cursor ahead = values.cursor();
    Checkpoint::scan_values(ahead, 1, &values.entities());
    ValueTape tape;
    tape.reset(values.view(), &values.entities());
    const Checkpoint::ValueRef value(tape, tape.decode(values.cursor()));
    return written([&](Writer& out) {
      JsonWriter writer(out, Form::compact);
      PlainJsonWriter().write(value, writer);
    });
  }
  [[nodiscard]] std::string json(const Fields& fields) const {
    return json(TraceBuilder(GetParam()), fields);
  }
};

INSTANTIATE_TEST_SUITE_P(BothOrders, PlainJson, ::testing::ValuesIn(both_orders));

TEST_P(PlainJson, ScalarsStandAlone) {
  EXPECT_EQ(json(value::undef()), "null");
  EXPECT_EQ(json(value::null()), "null");
  EXPECT_EQ(json(value::boolean(false)), "false");
  EXPECT_EQ(json(value::boolean(true)), "true");
  EXPECT_EQ(json(value::integer(std::numeric_limits<std::int64_t>::min())), "-9223372036854775808");
  EXPECT_EQ(json(value::string("a\"b\n")), R"("a\"b\n")");
  EXPECT_EQ(json(value::string("\xFF")), "\"\xEF\xBF\xBD\"");
}

TEST_P(PlainJson, ADoubleIsTold) {
  EXPECT_EQ(json(value::real(5)), "5.0");
  EXPECT_EQ(json(value::real(-0.0)), "-0.0");
  EXPECT_EQ(json(value::real(0.1)), "0.1");
  EXPECT_EQ(json(value::real(1e300)), "1e+300");
  EXPECT_EQ(json(value::real(std::numeric_limits<double>::quiet_NaN())), R"("NaN")");
  EXPECT_EQ(json(value::real(std::numeric_limits<double>::infinity())), R"("Infinity")");
  EXPECT_EQ(json(value::real(-std::numeric_limits<double>::infinity())), R"("-Infinity")");
}

TEST_P(PlainJson, ListsAndMapsAreThemselves) {
  EXPECT_EQ(json(value::list({})), "[]");
  EXPECT_EQ(json(value::list({value::integer(1), value::undef(), value::string("x")})),
            R"([1,null,"x"])");
  EXPECT_EQ(json(value::map({{value::string("z"), value::integer(1)},
                             {value::string("a"), value::list({value::integer(2)})},
                             {value::integer(-7), value::undef()}})),
            R"({"z":1,"a":[2],"-7":null})");
}

TEST_P(PlainJson, OfEqualKeysTheLastCounts) {
  EXPECT_EQ(json(value::map({{value::string("5"), value::integer(1)},
                             {value::string("b"), value::integer(2)},
                             {value::integer(5), value::integer(3)},
                             {value::string("b"), value::integer(4)},
                             {value::string("c"), value::integer(5)}})),
            R"({"5":3,"b":4,"c":5})");
  // As text they are the same.
  EXPECT_EQ(json(value::map({{value::string("\xFE"), value::integer(1)},
                             {value::string("\xFF"), value::integer(2)}})),
            "{\"\xEF\xBF\xBD\":2}");
}

TEST_P(PlainJson, KeysThatPhpCannotMakeHaveAShortText) {
  TraceBuilder trace(GetParam());
  const Ref name = trace.text(std::string(1000, 'n'));
  EXPECT_EQ(json(trace, value::map({{value::null(), value::integer(1)},
                                    {value::boolean(true), value::integer(2)},
                                    {value::real(1.5), value::integer(3)},
                                    {value::list({}), value::integer(4)},
                                    {value::object(0, 6), value::integer(5)},
                                    {value::resource(name, 7), value::integer(6)}})),
            R"({"":1,"1":2,"1.5":3,"array":4,"object#6":5,"resource#7":6})");
}

TEST_P(PlainJson, WhatWasCutSaysSo) {
  EXPECT_EQ(json(value::cut_string("abc", 10)), R"("abc**CUT**")");
  EXPECT_EQ(json(value::map(
                {{value::integer(0), value::integer(1)}, {value::cut_marker(), value::null()}})),
            R"([1,"**CUT**"])");
  EXPECT_EQ(json(value::map(
                {{value::string("a"), value::integer(1)}, {value::cut_marker(), value::null()}})),
            R"({"a":1,"**CUT**":true})");
  EXPECT_EQ(json(value::list({value::cut_marker()})), R"([["**CUT**"]])");
}

TEST_P(PlainJson, ObjectsAndResourcesAreNamed) {
  TraceBuilder trace(GetParam());
  const Ref note = trace.klass({.name = "App\\Note"});
  const Ref stream = trace.text("stream");
  EXPECT_EQ(json(trace, value::object(note, 7)), R"({"class":"App\\Note","handle":7})");
  EXPECT_EQ(json(trace, value::object(0, 7)), R"({"handle":7})");
  EXPECT_EQ(json(trace, value::resource(stream, 3)), R"({"resource":"stream","handle":3})");
}

TEST_P(PlainJson, IsAsDeepAsTheData) {
  constexpr std::size_t levels = 100'000;
  const std::string deep = json(value::nest(levels, value::integer(7)));
  std::string expected(levels, '[');
  expected += '7';
  expected.append(levels, ']');
  EXPECT_EQ(deep, expected);
}

TEST_P(PlainJson, IsJsonWhateverTheValue) {
  const ValueNames names(GetParam());
  Awkward random(5);
  PlainJsonWriter writer;
  for (std::size_t i = 0; i != 500; ++i) {
    ValueTrace trace(names.trace, random.value(random.below(51), !random.one_in(4), names));
    ValueTape tape;
    const Checkpoint::ValueRef value = trace.next(tape);
    const std::string text = written([&](Writer& out) {
      JsonWriter json(out, Form::compact);
      json.begin_array();
      json.element();
      writer.write(value, json);
      json.end_array();
    });
    QJsonParseError error;
    QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
    ASSERT_TRUE(error.error == QJsonParseError::NoError ||
                error.error == QJsonParseError::DeepNesting)
        << error.errorString().toStdString() << " in " << text;
  }
}

}  // namespace
}  // namespace CT::Test
