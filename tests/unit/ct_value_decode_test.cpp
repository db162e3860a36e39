// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "codetrace/model/ct_value.h"
#include "open_trace.h"
#include "value_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::KVal;
using Checkpoint::ValueType;

const std::string mark = "\xEF\xBB\xBF";

class ValueDecoding : public ::testing::TestWithParam<ByteOrder> {
 protected:
  // The value, with what it leaves of the payload behind it.
  struct Decoded {
    Decoded(ByteOrder order, const Fields& fields)
        : trace(order, Fields(fields).raw("rest")),
          value(trace.next()),
          left(trace.cursor().left()) {}
    ValueTrace trace;
    KVal value;
    std::size_t left;
  };
  Decoded decode(const Fields& value) const { return {GetParam(), value}; }
};

INSTANTIATE_TEST_SUITE_P(BothOrders, ValueDecoding, ::testing::ValuesIn(both_orders));

TEST_P(ValueDecoding, ScalarsWithoutPayloadTakeOneByte) {
  const std::vector<std::pair<Fields, ValueType>> rows = {
      {value::undef(), ValueType::undef},
      {value::null(), ValueType::null},
      {value::boolean(false), ValueType::false_},
      {value::boolean(true), ValueType::true_}};
  for (const auto& [fields, type] : rows) {
    const Decoded decoded = decode(fields);
    EXPECT_EQ(decoded.value.type(), type);
    EXPECT_EQ(decoded.value.as_boolean(), type == ValueType::true_);
    EXPECT_EQ(decoded.left, 4U);
  }
}

TEST_P(ValueDecoding, UnknownCodesAreUndefAndTakeOneByte) {
  for (unsigned code = 10; code != 256; ++code) {
    const Decoded decoded = decode(value::code(static_cast<std::uint8_t>(code)));
    EXPECT_EQ(decoded.value.type(), ValueType::undef) << code;
    EXPECT_EQ(decoded.left, 4U) << code;
  }
}

TEST_P(ValueDecoding, LongsAreSignedAndInTheFilesOrder) {
  for (const std::int64_t number :
       {std::int64_t{1}, std::int64_t{-5}, std::int64_t{0x0102030405060708},
        std::numeric_limits<std::int64_t>::min()}) {
    const Decoded decoded = decode(value::integer(number));
    EXPECT_EQ(decoded.value.as_long(), number);
    EXPECT_EQ(decoded.left, 4U);
  }
}

TEST(ValueDecodingByHand, ABigEndianOneIsOne) {
  ValueTrace trace(ByteOrder::big, Fields().raw(std::string("\4\0\0\0\0\0\0\0\1", 9)));
  EXPECT_EQ(trace.next().as_long(), 1);
}

TEST_P(ValueDecoding, DoublesKeepTheirBits) {
  EXPECT_EQ(decode(value::real(1.5)).value.as_double(), 1.5);
  EXPECT_TRUE(std::signbit(decode(value::real(-0.0)).value.as_double()));
  EXPECT_EQ(decode(value::real(5e-324)).value.as_double(), 5e-324);
}

TEST_P(ValueDecoding, AStringPointsIntoThePayload) {
  const Decoded decoded = decode(value::string("abc"));
  EXPECT_EQ(decoded.value.string().view(), "abc");
  EXPECT_EQ(decoded.value.string().orig_sz, 3);
  EXPECT_EQ(decoded.value.string().data, Section::as_chars(decoded.trace.view().payload() + 1 + 4));
  EXPECT_EQ(decoded.left, 4U);
}

TEST_P(ValueDecoding, ACutStringKnowsItsOriginalSize) {
  const Decoded decoded = decode(value::cut_string("abc", 10));
  EXPECT_EQ(decoded.value.string().view(), "abc");
  EXPECT_EQ(decoded.value.string().orig_sz, 10);
  EXPECT_EQ(decoded.left, 4U);
}

TEST_P(ValueDecoding, AnArrayOfNoPairsIsAnEmptyList) {
  for (const std::int32_t count : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
    const Decoded decoded = decode(value::array_header(count));
    EXPECT_TRUE(decoded.value.is_list());
    EXPECT_FALSE(decoded.value.is_cut());
    EXPECT_EQ(decoded.value.declared_count(), count);
    EXPECT_TRUE(decoded.value.elements().empty());
    EXPECT_EQ(decoded.left, 4U);
  }
}

TEST_P(ValueDecoding, AListHasTheKeysFromZeroOnInOrder) {
  const auto with_keys = [&](const std::vector<Fields>& keys) {
    std::vector<value::Pair> pairs;
    for (const Fields& key : keys) pairs.emplace_back(key, value::null());
    return decode(value::map(pairs)).value.is_list();
  };
  const auto number = value::integer;
  EXPECT_TRUE(with_keys({number(0)}));
  EXPECT_TRUE(with_keys({number(0), number(1)}));
  EXPECT_FALSE(with_keys({number(1)}));
  EXPECT_FALSE(with_keys({number(1), number(0)}));
  EXPECT_FALSE(with_keys({number(0), number(2)}));
  EXPECT_FALSE(with_keys({number(0), number(0)}));
  EXPECT_FALSE(with_keys({number(1), number(0), number(1)}));
  EXPECT_FALSE(with_keys({value::string("0")}));
  EXPECT_FALSE(with_keys({number(0), value::string("k"), number(1)}));
  EXPECT_FALSE(with_keys({value::real(0)}));
  EXPECT_FALSE(with_keys({value::undef()}));
  EXPECT_FALSE(with_keys({number(-1)}));
  EXPECT_FALSE(with_keys({number(0x1'0000'0000)}));
}

TEST_P(ValueDecoding, TheMarkerAsAKeyCutsTheArrayThere) {
  const Decoded decoded = decode(value::map({{value::integer(0), value::string("kept")},
                                             {value::cut_marker(), value::null()},
                                             {value::integer(1), value::string("dropped")}}));
  EXPECT_TRUE(decoded.value.is_cut());
  EXPECT_TRUE(decoded.value.is_list());
  EXPECT_EQ(decoded.value.declared_count(), 3);
  ASSERT_EQ(decoded.value.ref().size(), 1U);
  EXPECT_EQ(pairs_of(decoded.value)[0].second.string().view(), "kept");
  EXPECT_EQ(decoded.left, 4U) << "all declared pairs are consumed";
}

TEST_P(ValueDecoding, PairsBehindTheMarkerDoNotChangeTheList) {
  const Decoded decoded = decode(
      value::map({{value::cut_marker(), value::null()}, {value::string("k"), value::null()}}));
  EXPECT_TRUE(decoded.value.is_cut());
  EXPECT_TRUE(decoded.value.is_list());
  EXPECT_TRUE(decoded.value.elements().empty());
}

TEST_P(ValueDecoding, TheMarkerAsAnElementIsAnEmptyCutArray) {
  const Decoded decoded = decode(value::list({value::cut_marker(), value::null()}));
  EXPECT_FALSE(decoded.value.is_cut());
  ASSERT_EQ(decoded.value.ref().size(), 2U);
  const KVal element = pairs_of(decoded.value)[0].second;
  EXPECT_EQ(element.type(), ValueType::array);
  EXPECT_TRUE(element.is_cut());
  EXPECT_TRUE(element.is_list());
  EXPECT_EQ(element.declared_count(), 0);
  EXPECT_TRUE(element.elements().empty());
  EXPECT_EQ(element.string().data, nullptr);
}

TEST_P(ValueDecoding, OnlyTheExactTextIsTheMarker) {
  for (const std::string& text :
       {std::string("**cut**"), std::string("**CUT** "), std::string(" **CUT**"),
        std::string("**CUT**\0", 8), mark + mark + "**CUT**"}) {
    const Decoded decoded = decode(value::map({{value::string(text), value::string(text)}}));
    EXPECT_FALSE(decoded.value.is_cut());
    ASSERT_EQ(decoded.value.ref().size(), 1U);
    EXPECT_EQ(pairs_of(decoded.value)[0].second.string().view(), text);
  }
}

TEST_P(ValueDecoding, AByteOrderMarkBeforeTheMarkerDoesNotHideIt) {
  const Fields marked = value::string(mark + "**CUT**");
  EXPECT_TRUE(decode(value::map({{marked, value::null()}})).value.is_cut());
  EXPECT_TRUE(pairs_of(decode(value::list({marked})).value)[0].second.is_cut());
}

TEST_P(ValueDecoding, AMarkerThatWasCutItselfIsAMarker) {
  const Fields marker = value::cut_string("**CUT**", 100);
  EXPECT_TRUE(decode(value::map({{marker, value::null()}})).value.is_cut());
  EXPECT_TRUE(pairs_of(decode(value::list({marker})).value)[0].second.is_cut());
}

TEST_P(ValueDecoding, TheMarkerOutsideOfAnArrayIsAString) {
  EXPECT_EQ(decode(value::cut_marker()).value.string().view(), "**CUT**");
}

TEST_P(ValueDecoding, ArraysMayBeKeys) {
  const Decoded decoded =
      decode(value::map({{value::list({value::null()}), value::boolean(true)}}));
  ASSERT_EQ(decoded.value.ref().size(), 1U);
  EXPECT_EQ(pairs_of(decoded.value)[0].first.ref().size(), 1U);
  EXPECT_TRUE(pairs_of(decoded.value)[0].second.as_boolean());
  EXPECT_EQ(decoded.left, 4U);
}

TEST_P(ValueDecoding, ObjectsOfOneClassShareItsEntry) {
  TraceBuilder trace(GetParam());
  const Ref klass = trace.klass({.name = "A"});
  ValueTrace values(trace, value::object(klass, 7).append(value::object(klass, 0xFFFFFFFF)));
  const KVal first = values.next();
  const KVal second = values.next();
  EXPECT_EQ(first.object_handle(), 7U);
  EXPECT_EQ(second.object_handle(), 0xFFFFFFFFU);
  ASSERT_NE(first.class_entry(), nullptr);
  EXPECT_EQ(first.class_entry()->id(), 0);
  EXPECT_EQ(first.class_entry(), second.class_entry());
}

TEST_P(ValueDecoding, WithoutATableEachObjectHasAnEntryOfItsOwn) {
  TraceBuilder trace(GetParam());
  const Ref klass = trace.klass({.name = "A"});
  ValueTrace values(trace, value::object(klass, 1).append(value::object(klass, 1)));
  const KVal first = values.next_alone();
  const KVal second = values.next_alone();
  EXPECT_EQ(first.class_entry()->id(), -1);
  EXPECT_EQ(second.class_entry()->id(), -1);
  EXPECT_NE(first.class_entry(), second.class_entry());
  EXPECT_TRUE(values.entities().classes().empty());
}

TEST_P(ValueDecoding, AnObjectWithoutAClassKeepsItsHandle) {
  for (const Ref ref : {Ref{0}, Ref{1}, TraceBuilder::default_orig_add_data}) {
    const Decoded decoded = decode(value::object(ref, 42));
    EXPECT_EQ(decoded.value.class_entry(), nullptr);
    EXPECT_EQ(decoded.value.object_handle(), 42U);
    EXPECT_EQ(decoded.left, 4U);
  }
}

TEST_P(ValueDecoding, ClassesOfDroppedPairsAreNumberedToo) {
  TraceBuilder trace(GetParam());
  const Ref dropped = trace.klass({.name = "Dropped"});
  const Ref kept = trace.klass({.name = "Kept"});
  ValueTrace values(trace, value::map({{value::cut_marker(), value::object(dropped, 1)}})
                               .append(value::object(kept, 1)));
  values.next();
  EXPECT_EQ(values.next().class_entry()->id(), 1);
}

TEST_P(ValueDecoding, AResourceHasANameAndASignedHandle) {
  TraceBuilder trace(GetParam());
  const Ref name = trace.text("stream");
  ValueTrace values(trace, value::resource(name, ~std::uint64_t{0}).append(value::resource(0, 5)));
  const KVal known = values.next();
  EXPECT_EQ(known.resource_name().view(), "stream");
  EXPECT_EQ(known.resource_name().orig_sz, -1);
  EXPECT_EQ(known.resource_handle(), -1);
  const KVal unknown = values.next();
  EXPECT_EQ(unknown.resource_name().data, nullptr);
  EXPECT_EQ(unknown.resource_name().orig_sz, -1);
  EXPECT_EQ(unknown.resource_handle(), 5);
  EXPECT_EQ(values.cursor().left(), 0U);
}

TEST(Value, IsUndefByDefault) {
  const KVal value;
  EXPECT_EQ(value.type(), ValueType::undef);
  EXPECT_EQ(value.to_string(true), QStringLiteral("undef"));
  EXPECT_TRUE(value.as_json().isUndefined());
  EXPECT_TRUE(value.elements().empty());
}

TEST(Value, ACopyOfAnArrayOutlivesItsSource) {
  ValueTrace trace(ByteOrder::little, value::list({value::string("kept")}));
  KVal source = trace.next();
  KVal copy;
  copy.copy(source);
  source.reset();
  EXPECT_EQ(source.type(), ValueType::undef);
  ASSERT_EQ(copy.ref().size(), 1U);
  EXPECT_EQ(pairs_of(copy)[0].second.string().view(), "kept");
}

TEST(Value, ElementsOutliveTheirArray) {
  ValueTrace trace(ByteOrder::little, value::list({value::list({value::integer(7)})}));
  KVal element;
  {
    const KVal array = trace.next();
    element.copy(pairs_of(array)[0].second);
  }
  EXPECT_EQ(element.to_string(true), QStringLiteral("array(0 => 7)"));
}

TEST(Value, CopyingItOntoItselfChangesNothing) {
  ValueTrace trace(ByteOrder::little, value::list({value::integer(7)}));
  KVal value = trace.next();
  value.copy(value);
  EXPECT_EQ(value.to_string(true), QStringLiteral("array(0 => 7)"));
}

}  // namespace
}  // namespace CT::Test
