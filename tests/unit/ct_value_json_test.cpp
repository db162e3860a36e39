// SPDX-License-Identifier: MIT
//
// Streamed values are held equal to what Qt prints of the same value in Qt's classes.
#include "codetrace/render/ct_value_json.h"

#include <gtest/gtest.h>

#include <QJsonObject>
#include <string>
#include <vector>

#include "awkward.h"
#include "codetrace/model/ct_value.h"
#include "codetrace/qt/ct_value_qt.h"
#include "codetrace/render/ct_fields_json.h"
#include "plain_value.h"
#include "value_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

using Checkpoint::KVal;
using Checkpoint::ValueJsonWriter;
using Checkpoint::ValueTape;
using Form = JsonWriter::Form;

class ValueJson : public ::testing::TestWithParam<ByteOrder> {
 protected:
  // Streamed without blanks; the adapter must say the same.
  static std::string json(const TraceBuilder& trace, const Fields& fields, bool numbered = true) {
    ValueTrace values(trace, fields);
    const auto unnumbered = Entities::make(values.file(), Entities::Numbering::none);
    Entities& entities = numbered ? values.entities() : *unnumbered;
    Cursor ahead = values.cursor();
    Checkpoint::scan_values(ahead, 1, &entities);
    ValueTape tape;
    tape.reset(values.view(), &entities);
    const auto root = tape.decode(values.cursor());
    const std::string element = written_element(
        Form::compact, [&](JsonWriter& out) { ValueJsonWriter().write(tape, root, out); });
    EXPECT_EQ(element, qt_element(Form::compact, to_qt_json(Checkpoint::ValueRef(tape, root))));
    return element.substr(1, element.size() - 2);
  }
  std::string json(const Fields& fields) const { return json(TraceBuilder(GetParam()), fields); }

  // The adapter's value, of lists as deep as this.
  QJsonValue adapted(std::size_t levels, const Fields& leaf) const {
    return ValueTrace(GetParam(), value::nest(levels, leaf)).next().as_json();
  }
};

INSTANTIATE_TEST_SUITE_P(BothOrders, ValueJson, ::testing::ValuesIn(both_orders));

TEST_P(ValueJson, ScalarsAreThoseOfJson) {
  EXPECT_EQ(json(value::null()), "null");
  EXPECT_EQ(json(value::boolean(false)), "false");
  EXPECT_EQ(json(value::boolean(true)), "true");
  EXPECT_EQ(json(value::integer(9007199254740993)), "9007199254740993");
  EXPECT_EQ(json(value::real(0.1)), "0.1");
  EXPECT_EQ(json(value::real(1e16)), "1e+16");
}

TEST_P(ValueJson, UndefIsUndefinedAndPrintsAsNull) {
  for (const Fields& fields : {value::undef(), value::code(12), value::code(255)}) {
    EXPECT_TRUE(ValueTrace(GetParam(), fields).next().as_json().isUndefined());
    EXPECT_EQ(json(fields), "null");
  }
}

TEST_P(ValueJson, UndefIsNullInAListAndMissingInAMap) {
  EXPECT_EQ(json(value::list({value::undef(), value::integer(1)})), R"({"array":[null,1]})");
  EXPECT_EQ(json(value::map(
                {{value::string("a"), value::undef()}, {value::string("b"), value::integer(1)}})),
            R"({"array":{"\"b\"":1}})");
}

TEST_P(ValueJson, AStringIsAnObjectWithItsOriginalSizeIfItWasCut) {
  EXPECT_EQ(json(value::cut_string("abc", 10)), R"({"orig_sz":10,"string":"abc"})");
  EXPECT_EQ(json(value::string("abc")), R"({"string":"abc"})");
}

TEST_P(ValueJson, KeysAreTheTextsOfKeys) {
  EXPECT_EQ(json(value::map({{value::integer(7), value::integer(1)},
                             {value::string("7"), value::integer(2)},
                             {value::null(), value::integer(3)},
                             {value::list({}), value::integer(4)}})),
            R"-({"array":{"\"7\"":2,"7":1,"array()":4,"null":3}})-");
}

TEST_P(ValueJson, OfKeysThatLookAlikeTheLastOneCounts) {
  const Fields one = value::real(1.0000001);
  const Fields other = value::real(1.0000002);
  EXPECT_EQ(json(value::map({{one, value::integer(1)}, {other, value::integer(2)}})),
            R"({"array":{"1":2}})");
  EXPECT_EQ(json(value::map({{one, value::integer(1)}, {other, value::undef()}})),
            R"({"array":{}})");
  EXPECT_EQ(json(value::map({{one, value::undef()}, {other, value::integer(2)}})),
            R"({"array":{"1":2}})");
  EXPECT_EQ(json(value::map({{value::string("\xEF\xBB\xBFk"), value::integer(1)},
                             {value::string("k"), value::integer(2)}})),
            R"({"array":{"\"k\"":2}})");
}

TEST_P(ValueJson, KeysSortByUtf16) {
  EXPECT_EQ(json(value::map({{value::string("\xEE\x80\x80"), value::integer(1)},
                             {value::string("\xF0\x9F\x98\x80"), value::integer(2)}})),
            "{\"array\":{\"\\\"\xF0\x9F\x98\x80\\\"\":2,\"\\\"\xEE\x80\x80\\\"\":1}}");
}

TEST_P(ValueJson, ACutArrayTellsSo) {
  EXPECT_EQ(json(value::map({{value::cut_marker(), value::null()}})), R"({"array":[],"cut":true})");
  EXPECT_EQ(json(value::list({value::cut_marker()})), R"({"array":[{"array":[],"cut":true}]})");
  EXPECT_EQ(
      json(value::map({{value::integer(5), value::null()}, {value::cut_marker(), value::null()}})),
      R"({"array":{"5":null},"cut":true})");
}

TEST_P(ValueJson, ObjectsReferToTheirClassByNumber) {
  TraceBuilder trace(GetParam());
  const Ref a = trace.klass({.name = "A"});
  const Ref b = trace.klass({.name = "B", .file = "/b.php", .line = 2});
  EXPECT_EQ(json(trace, value::list({value::object(b, 1), value::object(a, 2),
                                     value::object(b, 4294967295U), value::object(0, 42)})),
            R"({"array":[{"class":0,"handle":1},{"class":1,"handle":2},)"
            R"({"class":0,"handle":4294967295},{"handle":42}]})");
  EXPECT_EQ(json(trace, value::object(b, 1), false),
            R"({"class":{"filename":"/b.php","line_no":2,"name":"B"},"handle":1})");
}

TEST_P(ValueJson, ResourcesHaveASignedHandle) {
  TraceBuilder trace(GetParam());
  const Ref name = trace.text("stream");
  EXPECT_EQ(json(trace, value::resource(name, ~std::uint64_t{0})),
            R"({"handle":-1,"resource":"stream"})");
  EXPECT_EQ(json(trace, value::resource(0, 5)), R"({"handle":5,"resource":""})");
}

TEST_P(ValueJson, EqualsQtAndThePlainRulesForRandomValues) {
  const ValueNames names(GetParam());
  Awkward random(1);
  ValueJsonWriter writer;
  for (std::size_t i = 0; i != 800; ++i) {
    const Fields fields = random.value(random.below(51), !random.one_in(4), names);
    ValueTrace trace(names.trace, fields);
    const auto shared = std::make_shared<ValueTape>();
    ValueTape& tape = *shared;
    const ValueTape::Index root = trace.next(tape).item();
    const KVal value(shared, root);
    const std::string bytes = fields.encode(GetParam());
    const PlainValue plain = PlainReader(bytes, GetParam(), names.known).read();
    for (const Form form : {Form::compact, Form::indented}) {
      const std::string expected = qt_element(form, value.as_json());
      const auto write = [&](JsonWriter& out) { writer.write(tape, root, out); };
      ASSERT_EQ(written_element(form, write), expected);
      ASSERT_EQ(qt_element(form, plain.as_json()), expected);
    }
  }
}

TEST_P(ValueJson, TheAdapterHoldsAThousandLevelsAndNoMore) {
  QJsonValue inner = adapted(1000, value::integer(7));
  for (std::size_t i = 0; i != 1000; ++i) {
    const QJsonArray list = inner.toObject().value(QStringLiteral("array")).toArray();
    ASSERT_EQ(list.size(), 1) << i;
    inner = list.at(0);
  }
  EXPECT_EQ(inner, QJsonValue(7));
  EXPECT_TRUE(adapted(1000, value::list({})).isUndefined());
  EXPECT_TRUE(adapted(1001, value::integer(7)).isUndefined());
}

TEST_P(ValueJson, TheAdapterCountsLevelsNotArrays) {
  std::vector<Fields> many(3000, value::list({}));
  const QJsonValue flat = ValueTrace(GetParam(), value::list(many)).next().as_json();
  EXPECT_EQ(flat.toObject().value(QStringLiteral("array")).toArray().size(), 3000);
}

TEST_P(ValueJson, AllValuesOfATapeAreOneArray) {
  ValueTrace trace(
      GetParam(),
      value::list({value::integer(1)}).append(value::undef()).append(value::string("b")));
  ValueTape tape;
  tape.reset(trace.view(), nullptr);
  for (int i = 0; i != 3; ++i) tape.decode(trace.cursor());
  CT::Fields fields;
  fields.set(FieldName::args, Checkpoint::Values(tape));
  fields.set(FieldName::return_, Checkpoint::ValueRef(tape, tape.size() - 1));
  JsonRoom room;
  const std::string expected =
      R"({"args":[{"array":[1]},null,{"string":"b"}],"return":{"string":"b"}})";
  EXPECT_EQ(written_json(Form::compact, [&](JsonWriter& out) { write_json(fields, out, &room); }),
            expected);
  QJsonObject object;
  insert_into(object, fields);
  EXPECT_EQ(QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString(), expected);
}

}  // namespace
}  // namespace CT::Test
