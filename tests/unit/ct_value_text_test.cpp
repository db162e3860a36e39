// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_value_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "awkward.h"
#include "codetrace/model/ct_value.h"
#include "plain_value.h"
#include "value_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

using Checkpoint::KVal;
using Checkpoint::ValueRef;
using Checkpoint::ValueTape;
using Checkpoint::ValueTextWriter;
using Form = ValueTextWriter::Form;

class ValueText : public ::testing::TestWithParam<ByteOrder> {
 protected:
  std::string text(const Fields& fields, bool quoted = true) const {
    return text(TraceBuilder(GetParam()), fields, quoted);
  }
  static std::string text(const TraceBuilder& trace, const Fields& fields, bool quoted = true) {
    return ValueTrace(trace, fields).next().to_string(quoted).toStdString();
  }
  std::string escaped(const Fields& fields) const {
    return ValueTrace(GetParam(), fields).next().to_escaped_string(true).toStdString();
  }
};

INSTANTIATE_TEST_SUITE_P(BothOrders, ValueText, ::testing::ValuesIn(both_orders));

TEST_P(ValueText, ScalarsReadLikeTheScript) {
  EXPECT_EQ(text(value::undef()), "undef");
  EXPECT_EQ(text(value::code(12)), "undef");
  EXPECT_EQ(text(value::null()), "null");
  EXPECT_EQ(text(value::boolean(false)), "false");
  EXPECT_EQ(text(value::boolean(true)), "true");
  EXPECT_EQ(text(value::integer(-5)), "-5");
  EXPECT_EQ(text(value::integer(std::numeric_limits<std::int64_t>::min())), "-9223372036854775808");
}

TEST_P(ValueText, DoublesHaveSixDigits) {
  EXPECT_EQ(text(value::real(1.5)), "1.5");
  EXPECT_EQ(text(value::real(0.1)), "0.1");
  EXPECT_EQ(text(value::real(1e20)), "1e+20");
  EXPECT_EQ(text(value::real(123456789.0)), "1.23457e+08");
}

TEST_P(ValueText, AStringIsQuotedOnRequest) {
  EXPECT_EQ(text(value::string("abc"), false), "abc");
  EXPECT_EQ(text(value::string("abc"), true), "\"abc\"");
  EXPECT_EQ(text(value::string(""), true), "\"\"");
}

TEST_P(ValueText, TheMarkerOfACutStringStandsInsideTheQuotes) {
  EXPECT_EQ(text(value::cut_string("abc", 10), true), "\"abc**CUT**\"");
  EXPECT_EQ(text(value::cut_string("abc", 10), false), "abc**CUT**");
}

TEST_P(ValueText, AStringInsideAnArrayIsAlwaysQuoted) {
  EXPECT_EQ(text(value::map({{value::string("k"), value::string("v")}}), false),
            "array(\"k\" => \"v\")");
}

TEST_P(ValueText, ArraysListTheirPairs) {
  EXPECT_EQ(text(value::list({})), "array()");
  EXPECT_EQ(text(value::list({value::integer(1), value::string("a")})),
            "array(0 => 1, 1 => \"a\")");
  EXPECT_EQ(text(value::map({{value::string("k"), value::boolean(true)}})), "array(\"k\" => true)");
  EXPECT_EQ(text(value::list({value::list({value::list({})}), value::null()})),
            "array(0 => array(0 => array()), 1 => null)");
  EXPECT_EQ(text(value::map({{value::list({value::null()}), value::list({})}})),
            "array(array(0 => null) => array())");
}

TEST_P(ValueText, CutArraysEndInDots) {
  const value::Pair cut = {value::cut_marker(), value::null()};
  EXPECT_EQ(text(value::map({{value::integer(0), value::integer(1)}, cut})), "array(0 => 1, ...)");
  EXPECT_EQ(text(value::map({cut})), "array(...)");
  EXPECT_EQ(text(value::list({value::cut_marker()})), "array(0 => array(...))");
}

TEST_P(ValueText, PlaceMarkersInTextsAreNoPlaceMarkers) {
  EXPECT_EQ(text(value::map({{value::string("%1%2"), value::string("%3")}})),
            "array(\"%1%2\" => \"%3\")");
}

TEST_P(ValueText, ObjectsAndResourcesShowNameAndHandle) {
  TraceBuilder trace(GetParam());
  const Ref klass = trace.klass({.name = "App\\A"});
  const Ref name = trace.text("stream");
  EXPECT_EQ(text(trace, value::object(klass, 4294967295U)), "object(App\\A#4294967295)");
  EXPECT_EQ(text(trace, value::object(0, 42)), "object(!unknown!#42)");
  EXPECT_EQ(text(trace, value::resource(name, 5)), "resource(stream#5)");
  EXPECT_EQ(text(trace, value::resource(0, ~std::uint64_t{0})), "resource(#-1)");
}

TEST_P(ValueText, EscapingIsForAStringThatIsTheValueItself) {
  EXPECT_EQ(escaped(value::string("\t\"\\'")), R"("\t\"\\'")");
  EXPECT_EQ(escaped(value::cut_string("\n", 10)), R"("\n**CUT**")");
  EXPECT_EQ(escaped(value::list({value::string("\t")})), "array(0 => \"\t\")");
  EXPECT_EQ(escaped(value::integer(1)), "1");
}

// Qt escapes by replacing in the text that the plain form has.
std::string plain_escaped(const PlainValue& plain) {
  constexpr int string_type = 6;
  if (plain.type != string_type) return plain.to_string(true).toStdString();
  QString text = plain.to_string(false);
  text.replace(QLatin1Char('\t'), QStringLiteral("\\t"));
  text.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
  text.replace(QLatin1Char('\r'), QStringLiteral("\\r"));
  text.replace(QLatin1Char('"'), QStringLiteral("\\\""));
  text.replace(QLatin1Char('\''), QStringLiteral("\\'"));
  return '"' + text.toStdString() + '"';
}

TEST_P(ValueText, EqualsThePlainRulesForRandomValues) {
  const ValueNames names(GetParam());
  Awkward random(1);
  ValueTextWriter writer;
  for (std::size_t i = 0; i != 1000; ++i) {
    const Fields fields = random.value(random.below(51), true, names);
    ValueTrace trace(names.trace, fields);
    const std::string bytes = fields.encode(GetParam());
    const PlainValue plain = PlainReader(bytes, GetParam(), names.known).read();
    ValueTape tape;
    const ValueTape::Index root = trace.next(tape).item();
    ASSERT_EQ(written([&](Writer& out) { writer.write(ValueRef(tape, root), out); }),
              plain.to_string(true).toStdString());
  }
}

TEST_P(ValueText, EqualsThePlainRulesForRandomLeavesInEachForm) {
  const ValueNames names(GetParam());
  Awkward random(2);
  ValueTextWriter writer;
  for (std::size_t i = 0; i != 20'000; ++i) {
    const Fields fields = random.value(0, false, names);
    ValueTrace trace(names.trace, fields);
    const std::string bytes = fields.encode(GetParam());
    const PlainValue plain = PlainReader(bytes, GetParam(), names.known).read();
    const KVal value = trace.next();
    ASSERT_EQ(value.to_string(true), plain.to_string(true));
    ASSERT_EQ(value.to_string(false), plain.to_string(false));
    ASSERT_EQ(value.to_escaped_string(true).toStdString(), plain_escaped(plain));
    Cursor again = trace.view().cursor();
    ValueTape tape;
    tape.reset(trace.view(), &trace.entities());
    const auto root = tape.decode(again);
    ASSERT_EQ(written([&](Writer& out) { writer.write(ValueRef(tape, root), out, Form::escaped); }),
              plain_escaped(plain));
  }
}

TEST_P(ValueText, SeveralValuesOfATapeStandForThemselves) {
  ValueTrace trace(
      GetParam(),
      value::list({value::integer(1)}).append(value::string("b")).append(value::list({})));
  ValueTape tape;
  tape.reset(trace.view(), nullptr);
  for (int i = 0; i != 3; ++i) tape.decode(trace.cursor());
  std::string texts;
  for (ValueTape::Index i = 0; i != tape.size(); i = tape.end(i)) {
    texts += written([&](Writer& out) { ValueTextWriter().write(ValueRef(tape, i), out); }) + ";";
  }
  EXPECT_EQ(texts, "array(0 => 1);\"b\";array();");
}

}  // namespace
}  // namespace CT::Test
