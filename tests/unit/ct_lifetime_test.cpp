// SPDX-License-Identifier: MIT
//
// What is kept outlives what it came from: only the file must stay. Best run under sanitizers.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "codetrace/ct_storage.h"
#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_fields_json.h"
#include "codetrace/render/ct_records_dump.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::FunctionCall;
using Checkpoint::FunctionReturn;
using Checkpoint::KVal;
using Checkpoint::ValueRef;

constexpr std::string_view trace_text = R"(
  A: class user "A"
  B: class user "App\\B"
  F: function user "run" class A
  startup
  c: method fn F this obj(A, 7) args [obj(B, 8), [obj(A, 9)]]
  return of c value [obj(B, 10), "k" => [obj(A, 11)]]
  shutdown
)";

// A file of its own, since a storage is to end before it.
class Lifetime : public testing::TestWithParam<ByteOrder> {
 protected:
  Lifetime() {
    for (const BuiltTrace& built : build_traces(trace_text)) {
      if (built.order == GetParam()) {
        opened_ = file_.open(as_bytes(built.bytes), built.bytes.size());
      }
    }
  }
  void SetUp() override { ASSERT_TRUE(opened_); }

  CheckpointView view(std::size_t number) const {
    CheckpointView view(file_);
    for (std::size_t i = 0; i <= number; ++i) EXPECT_TRUE(view.step());
    return view;
  }

  File file_{QString()};
  bool opened_ = false;
};

template <class Value>
concept GivesItsElements = requires(Value&& value) {
  {std::forward<Value>(value).elements()};
};
template <class Value>
concept FindsAKey = requires(Value&& value) {
  {std::forward<Value>(value).find("key")};
};

// What would point into a tape that is gone does not compile.
static_assert(!std::is_constructible_v<ValueRef, KVal> &&
              std::is_constructible_v<ValueRef, const KVal&>);
static_assert(!GivesItsElements<KVal> && GivesItsElements<const KVal&>);
static_assert(!FindsAKey<KVal> && FindsAKey<const KVal&>);

INSTANTIATE_TEST_SUITE_P(BothOrders, Lifetime, testing::ValuesIn(both_orders));

std::string shown(const KVal& value) { return value.to_string(true).toStdString(); }

std::string line(const Node::Base& node) {
  QString text;
  EXPECT_TRUE(node.to_text(text));
  return text.toStdString();
}

TEST_P(Lifetime, AKeptNodeOutlivesItsStorage) {
  std::shared_ptr<const Node::Base> node;
  {
    Storage storage(file_);
    read_checkpoints(file_, storage);
    node = storage.node(1);
  }
  EXPECT_EQ(line(*node),
            "A::run(object(App\\B#8), array(0 => object(A#9))) Returned: "
            "array(0 => object(App\\B#10), \"k\" => array(0 => object(A#11)))");
  QJsonObject object;
  EXPECT_TRUE(node->to_json(object));
  EXPECT_EQ(object.value(QStringLiteral("this")),
            (QJsonObject{{QStringLiteral("class"), 0}, {QStringLiteral("handle"), 7}}));
  EXPECT_EQ(text_of(node->begin_as<FunctionCall>()->function()->class_entry()->name()), "A");
}

TEST_P(Lifetime, ANodeThatAddCheckpointReturnedOutlivesItsStorage) {
  std::shared_ptr<const Node::Base> node;
  {
    Storage storage(file_);
    for (std::size_t number = 0; number != 3; ++number) {
      node = storage.add_checkpoint(Checkpoint::make_record(view(number), nullptr));
    }
  }
  EXPECT_EQ(line(*node).substr(0, 7), "A::run(");
}

TEST_P(Lifetime, AKeptRecordOutlivesItsStorage) {
  std::shared_ptr<const Checkpoint::Base> call;
  std::shared_ptr<const Checkpoint::Base> end;
  {
    Storage storage(file_);
    call = Checkpoint::make_record(view(1), &storage.entities());
    end = Checkpoint::make_record(view(2), &storage.entities());
  }
  EXPECT_EQ(text_of(FunctionCall(*call).function()->name()), "run");
  EXPECT_EQ(text_of(FunctionCall(*call).function()->class_entry()->name()), "A");
  EXPECT_EQ(shown(FunctionCall(*call).this_value()), "object(A#7)");
  EXPECT_EQ(shown(FunctionReturn(*end).value()),
            "array(0 => object(App\\B#10), \"k\" => array(0 => object(A#11)))");
  const std::string dump = written([&](Writer& out) { call->dump(out); });
  EXPECT_NE(dump.find("\tARGS: object(App\\B#8), array(0 => object(A#9))\n"), std::string::npos);
}

TEST_P(Lifetime, KeptValuesOutliveTheirRecordAndTheStorage) {
  for (const bool with_storage : {true, false}) {
    KVal self;
    std::vector<KVal> args;
    KVal inner;
    {
      Storage storage(file_);
      Entities* entities = with_storage ? &storage.entities() : nullptr;
      const auto call = Checkpoint::make_record(view(1), entities);
      self = FunctionCall(*call).this_value();
      args = FunctionCall(*call).args();
      const auto end = Checkpoint::make_record(view(2), entities);
      const KVal returned = FunctionReturn(*end).value();
      inner = returned.keep(returned.ref().find("k"));
    }
    EXPECT_EQ(shown(self), "object(A#7)");
    ASSERT_EQ(args.size(), 2U);
    EXPECT_EQ(shown(args[0]), "object(App\\B#8)");
    EXPECT_EQ(shown(args[1]), "array(0 => object(A#9))");
    args.clear();
    EXPECT_EQ(shown(inner), "array(0 => object(A#11))");
    const KVal copy = inner;
    inner.reset();
    EXPECT_EQ(text_of((*copy.elements().begin()).value.class_entry()->name()), "A");
    EXPECT_EQ((*copy.elements().begin()).value.class_entry()->id() >= 0, with_storage);
  }
}

TEST_P(Lifetime, ValuesOfAKeptNodeOutliveIt) {
  KVal value;
  {
    Storage storage(file_);
    read_checkpoints(file_, storage);
    value = storage.node(1)->end_as<FunctionReturn>()->value();
  }
  EXPECT_EQ(shown(value), "array(0 => object(App\\B#10), \"k\" => array(0 => object(A#11)))");
}

TEST_P(Lifetime, AValueDecodedWithATableOutlivesTheTablesOtherOwners) {
  KVal value;
  {
    const auto entities = Entities::make(file_);
    const CheckpointView end = view(2);
    Cursor cursor = end.cursor_at(Format::reference_size);
    value = KVal(end, cursor, entities.get());
    EXPECT_TRUE(cursor.ok());
    EXPECT_EQ(cursor.left(), 0U);
  }
  EXPECT_EQ(shown(value), "array(0 => object(App\\B#10), \"k\" => array(0 => object(A#11)))");
}

}  // namespace
}  // namespace CT::Test
