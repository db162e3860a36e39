// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_value_ref.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "awkward.h"
#include "same_value.h"
#include "value_names.h"
#include "value_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Elements;
using Checkpoint::KVal;
using Checkpoint::ValueRef;
using Checkpoint::Values;
using Checkpoint::ValueTape;
using Checkpoint::ValueType;

static_assert(std::is_trivially_copyable_v<ValueRef>);

class ValueRefs : public testing::TestWithParam<ByteOrder> {
 protected:
  // The first value of these fields, on a tape that lives as long as the test.
  ValueRef ref(const Fields& fields, std::size_t keep = std::string::npos) {
    traces_.push_back(std::make_unique<ValueTrace>(GetParam(), fields, keep));
    tapes_.push_back(std::make_unique<ValueTape>());
    return traces_.back()->next(*tapes_.back());
  }

 private:
  std::vector<std::unique_ptr<ValueTrace>> traces_;
  std::vector<std::unique_ptr<ValueTape>> tapes_;
};

INSTANTIATE_TEST_SUITE_P(BothOrders, ValueRefs, testing::ValuesIn(both_orders));

// What every accessor says of a value that is undef.
void expect_undef(const ValueRef& value) {
  EXPECT_TRUE(value.is_undef());
  EXPECT_EQ(value.type(), ValueType::undef);
  EXPECT_FALSE(value.as_boolean());
  EXPECT_EQ(value.as_long(), 0);
  EXPECT_EQ(value.as_double(), 0.0);
  EXPECT_EQ(value.string().data, nullptr);
  EXPECT_FALSE(value.is_cut());
  EXPECT_FALSE(value.is_list());
  EXPECT_EQ(value.declared_count(), 0);
  EXPECT_EQ(value.size(), 0U);
  EXPECT_TRUE(value.elements().empty());
  EXPECT_EQ(value.class_entry(), nullptr);
  EXPECT_EQ(value.object_handle(), 0U);
  EXPECT_EQ(value.resource_name().data, nullptr);
  EXPECT_EQ(value.resource_handle(), 0);
}

TEST_P(ValueRefs, OfNoTapeIsUndef) {
  expect_undef(ValueRef());
  EXPECT_EQ(ValueRef().tape(), nullptr);
  expect_undef(ValueRef().find("a"));
  expect_undef(ValueRef().find(std::int64_t{0}));
}

TEST_P(ValueRefs, ElementsAreThePairsInFileOrder) {
  const ValueRef array = ref(value::map({{value::string("b"), value::integer(1)},
                                         {value::integer(7), value::list({value::null()})},
                                         {value::string("a"), value::real(0.5)}}));
  std::string all;
  for (const auto& [key, element] : array.elements()) {
    EXPECT_EQ(key.tape(), array.tape());
    all += std::to_string(static_cast<int>(key.type())) + ":" +
           std::to_string(static_cast<int>(element.type())) + " ";
  }
  EXPECT_EQ(all, "6:4 4:7 6:5 ");
  EXPECT_EQ(array.size(), 3U);
  EXPECT_EQ(array.declared_count(), 3);
  EXPECT_FALSE(array.elements().empty());
  const Elements elements = array.elements();
  EXPECT_EQ(std::distance(elements.begin(), elements.end()), 3);
  auto at = elements.begin();
  EXPECT_EQ((*at++).key.string().view(), "b");
  EXPECT_EQ((*at).key.as_long(), 7);
  EXPECT_EQ((*at).value.size(), 1U);
}

TEST_P(ValueRefs, SizeCountsThePairsThatThereAre) {
  EXPECT_EQ(ref(value::list({})).size(), 0U);
  EXPECT_EQ(ref(value::integer(3)).size(), 0U);
  EXPECT_EQ(ref(value::string("abc")).size(), 0U);
  const ValueRef marked =
      ref(value::map({{value::integer(0), value::null()}, {value::cut_marker(), value::null()}}));
  EXPECT_EQ(marked.size(), 1U);
  EXPECT_EQ(marked.declared_count(), 2);
  EXPECT_TRUE(marked.is_cut());
  const Fields two = value::list({value::null(), value::integer(1)});
  EXPECT_EQ(ref(two, two.size() - 1).size(), 2U);
  EXPECT_EQ(ref(two, two.size() - 10).size(), 1U);
  EXPECT_EQ(
      ref(value::list({value::nest(50, value::null()), value::nest(3, value::null())})).size(), 2U);
}

TEST_P(ValueRefs, FindsTheLastOfEqualKeys) {
  const ValueRef array = ref(value::map({{value::string("a"), value::integer(1)},
                                         {value::integer(5), value::integer(2)},
                                         {value::string("5"), value::integer(3)},
                                         {value::string("a"), value::integer(4)},
                                         {value::integer(-1), value::integer(5)},
                                         {value::integer(5), value::integer(6)},
                                         {value::string(""), value::integer(7)},
                                         {value::null(), value::integer(8)},
                                         {value::real(9), value::integer(9)}}));
  EXPECT_EQ(array.find("a").as_long(), 4);
  EXPECT_EQ(array.find("5").as_long(), 3);
  EXPECT_EQ(array.find("").as_long(), 7);
  EXPECT_EQ(array.find(std::int64_t{5}).as_long(), 6);
  EXPECT_EQ(array.find(std::int64_t{-1}).as_long(), 5);
  expect_undef(array.find("A"));
  expect_undef(array.find("-1"));
  expect_undef(array.find("null"));
  expect_undef(array.find(std::int64_t{0}));
  expect_undef(array.find(std::int64_t{9}));
}

TEST_P(ValueRefs, FindLooksAtTheStoredBytesAndNotIntoInnerArrays) {
  const std::string with_nul("a\0b", 3);
  const ValueRef array =
      ref(value::map({{value::string(with_nul), value::integer(1)},
                      {value::string("inner"), value::map({{value::string("x"), value::null()}})},
                      {value::cut_string("cut", 99), value::integer(2)}}));
  EXPECT_EQ(array.find(with_nul).as_long(), 1);
  EXPECT_EQ(array.find("cut").as_long(), 2);
  EXPECT_TRUE(array.find("a").is_undef());
  EXPECT_TRUE(array.find("x").is_undef());
  EXPECT_EQ(array.find("inner").find("x").type(), ValueType::null);
  EXPECT_TRUE(array.find("inner").find("inner").is_undef());
}

TEST_P(ValueRefs, FindOfWhatIsNoArrayIsUndef) {
  for (const Fields& fields : {value::string("a"), value::integer(1), value::object(0, 1)}) {
    EXPECT_TRUE(ref(fields).find("a").is_undef());
    EXPECT_TRUE(ref(fields).find(std::int64_t{1}).is_undef());
  }
}

TEST_P(ValueRefs, ValuesOfATapeFollowEachOther) {
  ValueTrace trace(GetParam(), value::list({value::null(), value::null()})
                                   .append(value::string("b"))
                                   .append(value::list({})));
  ValueTape tape;
  EXPECT_TRUE(Values(tape).empty());
  EXPECT_TRUE(Values().empty());
  tape.reset(trace.view(), nullptr);
  for (int i = 0; i != 3; ++i) tape.decode(trace.cursor());
  std::string sizes;
  for (const ValueRef& value : Values(tape)) sizes += std::to_string(value.size());
  EXPECT_EQ(sizes, "200");
}

TEST_P(ValueRefs, EqualThePlainRulesForRandomValues) {
  const ValueNames names(GetParam());
  Awkward random(31);
  for (std::size_t i = 0; i != 500; ++i) {
    const Fields fields = random.value(random.below(8), true, names);
    ValueTrace trace(names.trace, fields);
    const PlainValue plain = PlainReader(fields.encode(GetParam()), GetParam(), names.known).read();
    ValueTape tape;
    const ValueRef root = trace.next(tape);
    ASSERT_TRUE(same_value(plain, root));
    ASSERT_EQ(root.size(), plain.pairs.size());
    for (const PlainPair& pair : plain.pairs) {
      if (pair.first.type != static_cast<int>(ValueType::string)) continue;
      const auto last = std::find_if(plain.pairs.rbegin(), plain.pairs.rend(), [&](const auto& at) {
        return at.first.type == pair.first.type && at.first.text == pair.first.text;
      });
      ASSERT_TRUE(same_value(last->second, root.find(pair.first.text)));
    }
  }
}

TEST_P(ValueRefs, AKeptPartSharesTheTape) {
  ValueTrace trace(GetParam(), value::map({{value::string("k"), value::list({value::null()})}}));
  const KVal whole = trace.next();
  const KVal part = whole.keep(whole.ref().find("k"));
  EXPECT_EQ(part.ref().tape(), whole.ref().tape());
  EXPECT_TRUE(part.is_list());
  EXPECT_EQ(part.ref().size(), 1U);
}

// A cursor that has nothing to do with the payload of the view.
TEST_P(ValueRefs, AValueWhoseCursorLiesElsewhereIsUndef) {
  TraceBuilder trace(GetParam());
  trace.add(CheckpointDraft::raw(17, value::integer(1)));
  trace.add(CheckpointDraft::raw(17, value::list({value::string("text")})));
  trace.add(CheckpointDraft::raw(17, value::integer(3)));
  trace.add(CheckpointDraft::shutdown());
  const OpenTrace open(trace);
  const auto entities = Entities::make(open.file());
  for (const std::size_t of : {0U, 1U, 2U, 3U}) {
    for (const std::size_t at : {0U, 1U, 2U}) {
      Cursor cursor = open.view(at).cursor();
      const KVal value(open.view(of), cursor, entities.get());
      EXPECT_EQ(value.type() == ValueType::undef, of != at) << of << ' ' << at;
      if (of != at) expect_undef(value);
    }
  }
  const std::string other = value::list({value::integer(1)}).encode(GetParam());
  Cursor outside(as_bytes(other), as_bytes(other) + other.size(), GetParam() == ByteOrder::big);
  expect_undef(KVal(open.view(0), outside, nullptr));
  Cursor nothing;
  expect_undef(KVal(open.view(0), nothing, nullptr));
  // One that begins in the payload and ends behind it reads what is in it.
  const CheckpointView view = open.view(1);
  Cursor longer(view.payload(), open.file().data().end(), GetParam() == ByteOrder::big);
  EXPECT_EQ(KVal(view, longer, nullptr).to_string(true), QStringLiteral("array(0 => \"text\")"));
  Cursor before(open.file().data().data(), open.file().data().end(), GetParam() == ByteOrder::big);
  expect_undef(KVal(view, before, nullptr));
}

}  // namespace
}  // namespace CT::Test
