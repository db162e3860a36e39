// SPDX-License-Identifier: MIT
//
// Values that the payload's end cuts short, and values in general, against a plain decoder.
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

#include "awkward.h"
#include "codetrace/model/ct_value.h"
#include "same_value.h"
#include "value_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::KVal;
using Checkpoint::ValueType;

class ValueDamage : public ::testing::TestWithParam<ByteOrder> {
 protected:
  // Decodes what `keep` bytes leave of the value and compares it with the plain decoder.
  void compare(const Fields& fields, std::size_t keep) const {
    const std::string bytes = fields.encode(GetParam()).substr(0, keep);
    ValueTrace trace(names_.trace, Fields().raw(bytes));
    PlainReader plain(bytes, GetParam(), names_.known);
    const PlainValue expected = plain.read();
    const KVal value = trace.next();
    ASSERT_TRUE(is_same_value(expected, value)) << "of " << keep << " bytes";
    ASSERT_EQ(trace.cursor().ok(), plain.ok()) << keep;
    const std::size_t read = bytes.size() - trace.cursor().left();
    ASSERT_EQ(plain.ok() ? read : plain.position(), plain.position());
    // Stepping over it numbers the same classes and ends at the same place.
    Cursor again = trace.view().cursor();
    const auto entities = Entities::make(trace.file());
    Checkpoint::scan_values(again, 1, entities.get());
    ASSERT_EQ(again.position(), trace.cursor().position());
    ASSERT_EQ(again.ok(), trace.cursor().ok());
    ASSERT_EQ(entities->classes().size(), trace.entities().classes().size());
  }

  KVal decode(const Fields& fields, std::size_t keep) {
    trace_.emplace(GetParam(), fields, keep);
    return trace_->next();
  }

  const ValueNames names_ = ValueNames(GetParam());
  std::optional<ValueTrace> trace_;
};

INSTANTIATE_TEST_SUITE_P(BothOrders, ValueDamage, ::testing::ValuesIn(both_orders));

Fields rich_value(const ValueNames& names) {
  const Fields leaves = value::list(
      {value::undef(), value::null(), value::boolean(true), value::integer(-5), value::real(0.1),
       value::string("text"), value::cut_string("abc", 10), value::object(names.classes[0], 7),
       value::object(0, 8), value::resource(names.resources[0], 9), value::cut_marker()});
  return value::map({{value::string("leaves"), leaves},
                     {value::list({value::string("as a key")}), value::map({{leaves, leaves}})},
                     {value::code(12), value::object(names.classes[1], 1)},
                     {value::string("deep"), value::nest(5, value::string("end"))},
                     {value::cut_marker(), value::object(names.classes[2], 2)},
                     {value::string("dropped"), leaves}});
}

TEST_P(ValueDamage, ARichValueCutAtEveryByteKeepsWhatIsWhole) {
  const Fields fields = rich_value(names_);
  for (std::size_t keep = 1; keep <= fields.size(); ++keep) compare(fields, keep);
}

TEST_P(ValueDamage, RandomValuesEqualThePlainDecoder) {
  Awkward random(1);
  for (std::size_t i = 0; i != 3000; ++i) {
    const std::size_t depth = random.below(8);
    const Fields fields = random.value(depth, true, names_);
    compare(fields, fields.size());
    compare(fields, 1 + random.below(fields.size()));
  }
}

// Bytes that are mostly type codes and small numbers, so that they go deep.
TEST_P(ValueDamage, RandomBytesEqualThePlainDecoder) {
  Awkward random(2);
  for (std::size_t i = 0; i != 20'000; ++i) {
    std::string bytes(1 + random.below(120), '\0');
    for (char& byte : bytes) byte = static_cast<char>(random.below(random.one_in(20) ? 256 : 11));
    if (random.one_in(2)) bytes = value::array_header(3).encode(GetParam()) + bytes;
    compare(Fields().raw(bytes), bytes.size());
  }
}

TEST_P(ValueDamage, AScalarThatIsNotWholeIsUndef) {
  for (const Fields& fields :
       {value::integer(1), value::real(1), value::string("abc"), value::cut_string("abc", 9),
        value::object(0, 1), value::resource(0, 1), value::array_header(1)}) {
    for (std::size_t keep = 1; keep != fields.size(); ++keep) {
      EXPECT_EQ(decode(fields, keep).type(), ValueType::undef);
      EXPECT_FALSE(trace_->cursor().ok());
    }
  }
}

TEST_P(ValueDamage, WithoutAnyByteThereIsUndef) {
  EXPECT_EQ(decode(value::null(), 0).type(), ValueType::undef);
  EXPECT_FALSE(trace_->cursor().ok());
}

TEST_P(ValueDamage, BehindAFailureEveryValueIsUndef) {
  decode(value::integer(1), 5);
  EXPECT_EQ(trace_->next().type(), ValueType::undef);
  EXPECT_EQ(trace_->next().to_string(true), QStringLiteral("undef"));
}

TEST_P(ValueDamage, APairWhoseValueIsCutKeepsItsKey) {
  const Fields fields = value::map({{value::string("k"), value::integer(1)}});
  EXPECT_EQ(decode(fields, fields.size() - 1).to_string(true),
            QStringLiteral("array(\"k\" => undef)"));
  EXPECT_EQ(decode(fields, fields.size() - 9).to_string(true),
            QStringLiteral("array(\"k\" => undef)"));
}

TEST_P(ValueDamage, APairWhoseKeyIsCutIsDropped) {
  const Fields fields =
      value::map({{value::string("a"), value::null()}, {value::string("b"), value::null()}});
  EXPECT_EQ(decode(fields, fields.size() - 2).to_string(true),
            QStringLiteral("array(\"a\" => null)"));
  EXPECT_EQ(decode(fields, fields.size() - 7).to_string(true),
            QStringLiteral("array(\"a\" => null)"));
  EXPECT_EQ(trace_->next().declared_count(), 0);
}

TEST_P(ValueDamage, ArraysAroundTheDamageKeepTheirWholePairs) {
  const Fields inner = value::list({value::boolean(true), value::integer(1)});
  const Fields fields = value::list({value::null(), inner, value::null()});
  const std::size_t behind = value::list({value::null()}).size() - 5;
  const KVal damaged = decode(fields, fields.size() - behind - 1);
  EXPECT_EQ(damaged.to_string(true),
            QStringLiteral("array(0 => null, 1 => array(0 => true, 1 => undef))"));
  EXPECT_TRUE(damaged.is_list());
  EXPECT_EQ(damaged.declared_count(), 3);
}

TEST_P(ValueDamage, AnArrayThatIsCutAsAKeyIsDroppedWhole) {
  const Fields fields = value::map({{value::list({value::integer(1)}), value::null()}});
  EXPECT_EQ(decode(fields, fields.size() - 2).to_string(true), QStringLiteral("array()"));
}

TEST_P(ValueDamage, AHugeCountCostsNoMoreThanItsPayload) {
  const Fields fields =
      value::map(std::numeric_limits<std::int32_t>::max(), {{value::integer(0), value::null()}});
  EXPECT_EQ(decode(fields, fields.size()).to_string(true), QStringLiteral("array(0 => null)"));
}

TEST_P(ValueDamage, TheClassOfAnObjectThatIsCutIsNotNumbered) {
  const Fields fields = value::object(names_.classes[0], 1);
  ValueTrace trace(names_.trace, fields, fields.size() - 1);
  EXPECT_EQ(trace.next().class_entry(), nullptr);
  EXPECT_TRUE(trace.entities().classes().empty());
}

}  // namespace
}  // namespace CT::Test
