// SPDX-License-Identifier: MIT
//
// The deepest values that one payload can hold, on a thread with little stack.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "codetrace/model/ct_records.h"
#include "codetrace/model/ct_value.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/render/ct_value_text.h"
#include "open_trace.h"
#include "small_stack.h"

namespace CT::Test {
namespace {

using Checkpoint::FunctionReturn;
using Checkpoint::KVal;
using Checkpoint::ValueJsonWriter;
using Checkpoint::ValueRef;
using Checkpoint::ValueTape;
using Checkpoint::ValueTextWriter;
using Checkpoint::ValueType;

constexpr std::size_t largest_payload = 0xFFFFFF;
constexpr std::size_t reference_size = 8;
constexpr std::size_t whole_depth = 2'796'201;
constexpr std::size_t damaged_depth = 3'355'441;
constexpr std::size_t json_depth = 20'000;

// Counts what it is given and keeps both ends.
class Counter final : public Sink {
 public:
  bool write(std::string_view bytes) override {
    if (size == 0) head = bytes.substr(0, kept);
    tail += bytes.substr(bytes.size() - std::min(kept, bytes.size()));
    tail.erase(0, tail.size() - std::min(kept, tail.size()));
    size += bytes.size();
    return true;
  }

  std::size_t size = 0;
  std::string head;
  std::string tail;

 private:
  static constexpr std::size_t kept = 30;
};

std::string times(std::size_t count, std::string_view text) {
  std::string result;
  result.reserve(count * text.size());
  for (std::size_t i = 0; i != count; ++i) result += text;
  return result;
}

// A trace of one FUNCTION_RETURN of the call at no place, with these bytes as its value.
std::unique_ptr<OpenTrace> returning(ByteOrder order, const std::string& value) {
  TraceBuilder trace(order);
  trace.add(CheckpointDraft::function_return(0, Fields().raw(value)));
  return std::make_unique<OpenTrace>(trace);
}

std::string header(ByteOrder order) { return value::array_header(1).encode(order); }

// Arrays of one pair each: inside each other as values, every key null; or as keys, every value
// null.
std::string nested_values(ByteOrder order, std::size_t depth) {
  return times(depth, header(order) + "\1") + "\1";
}
std::string nested_keys(ByteOrder order, std::size_t depth) {
  return times(depth, header(order)) + "\1" + times(depth, "\1");
}

// Decodes, copies, prints and destroys; returns what was printed.
Counter print(const Checkpoint::Base& record) {
  const FunctionReturn ending(record);
  Counter counter;
  KVal copy;
  {
    const KVal value = ending.value();
    copy.copy(value);
  }
  EXPECT_EQ(copy.type(), ValueType::array);
  EXPECT_LE(copy.ref().size(), 1U);
  ValueTape tape;
  const ValueTape::Index root = ending.value(tape).item();
  StreamWriter out(counter);
  ValueTextWriter().write(ValueRef(tape, root), out);
  out.flush();
  return counter;
}

Counter print_json(const Checkpoint::Base& record, JsonWriter::Form form) {
  ValueTape tape;
  const ValueTape::Index root = FunctionReturn(record).value(tape).item();
  Counter counter;
  StreamWriter out(counter);
  JsonWriter json(out, form);
  ValueJsonWriter().write(tape, root, json);
  out.flush();
  return counter;
}

class DeepValue : public ::testing::TestWithParam<ByteOrder> {};

INSTANTIATE_TEST_SUITE_P(BothOrders, DeepValue, ::testing::ValuesIn(both_orders));

TEST_P(DeepValue, TheDeepestWholeOneIsPrinted) {
  const std::string bytes = nested_values(GetParam(), whole_depth);
  ASSERT_EQ(reference_size + bytes.size(), largest_payload);
  const auto trace = returning(GetParam(), bytes);
  on_small_stack([&] {
    const auto record = trace->record();
    EXPECT_FALSE(record->damage());
    const Counter text = print(*record);
    EXPECT_EQ(text.size, whole_depth * std::string_view("array(null => )").size() + 4);
    EXPECT_EQ(text.head, "array(null => array(null => ar");
    EXPECT_EQ(text.tail, std::string(30, ')'));
  });
}

TEST_P(DeepValue, TheDeepestWholeKeyIsPrinted) {
  const std::string bytes = nested_keys(GetParam(), whole_depth);
  ASSERT_EQ(reference_size + bytes.size(), largest_payload);
  const auto trace = returning(GetParam(), bytes);
  on_small_stack([&] {
    const auto record = trace->record();
    EXPECT_FALSE(record->damage());
    const Counter text = print(*record);
    EXPECT_EQ(text.size, whole_depth * std::string_view("array( => null)").size() + 4);
    EXPECT_EQ(text.head, "array(array(array(array(array(");
    EXPECT_EQ(text.tail, "ll) => null) => null) => null)");
  });
}

TEST_P(DeepValue, OfTheDeepestDamagedKeyNothingIsLeftButTheArrayAroundIt) {
  std::string bytes = times(damaged_depth, header(GetParam()));
  bytes.resize(largest_payload - reference_size, '\7');  // the next array is cut
  const auto trace = returning(GetParam(), bytes);
  on_small_stack([&] {
    const auto record = trace->record();
    EXPECT_EQ(record->damage(), reference_size + damaged_depth * header(GetParam()).size() + 1);
    EXPECT_EQ(print(*record).head, "array()");
  });
}

TEST_P(DeepValue, TheDeepestDamagedOneEndsInUndef) {
  std::string bytes = nested_values(GetParam(), whole_depth);
  bytes.back() = '\7';
  const auto trace = returning(GetParam(), bytes);
  on_small_stack([&] {
    const auto record = trace->record();
    EXPECT_EQ(record->damage(), largest_payload);
    const Counter text = print(*record);
    EXPECT_EQ(text.size, whole_depth * std::string_view("array(null => )").size() + 5);
    EXPECT_EQ(text.tail, std::string(30, ')'));
  });
}

TEST_P(DeepValue, QtsClassesAreNotGivenTheDeepestOne) {
  const auto trace = returning(GetParam(), nested_values(GetParam(), whole_depth));
  on_small_stack([&] {
    const auto ending = trace->record<FunctionReturn>();
    EXPECT_TRUE(ending->value().as_json().isUndefined());
  });
}

TEST(DeepJson, IsPrintedCompactOfTheDeepestOnes) {
  const auto values = returning(ByteOrder::little, nested_values(ByteOrder::little, whole_depth));
  const auto keys = returning(ByteOrder::little, nested_keys(ByteOrder::little, whole_depth));
  on_small_stack([&] {
    const Counter deep = print_json(*values->record(), JsonWriter::Form::compact);
    EXPECT_EQ(deep.size, whole_depth * std::string_view(R"({"array":{"null":}})").size() + 4);
    EXPECT_EQ(deep.tail, std::string(30, '}'));
    const Counter key = print_json(*keys->record(), JsonWriter::Form::compact);
    // The outermost array has the text of all the others as its only key.
    EXPECT_EQ(key.size, (whole_depth - 1) * std::string_view("array( => null)").size() + 4 +
                            std::string_view(R"({"array":{"":null}})").size());
    EXPECT_EQ(key.tail, R"-(ull) => null) => null)":null}})-");
  });
}

// Indented JSON grows with the square of the depth: gigabytes already here.
TEST(DeepJson, IsPrintedIndented) {
  const auto trace = returning(ByteOrder::little, nested_values(ByteOrder::little, json_depth));
  on_small_stack([&] {
    const Counter json = print_json(*trace->record(), JsonWriter::Form::indented);
    std::size_t expected = std::string_view("null").size();
    for (std::size_t i = 0; i != json_depth; ++i) {
      const std::string_view signs = "{\n\"array\": {\n\"null\": \n}\n}";
      const std::size_t blanks = 8 * i;
      expected += signs.size() + (blanks + 4) + (blanks + 8) + (blanks + 4) + blanks;
    }
    EXPECT_EQ(json.size, expected);
    EXPECT_EQ(json.head, "{\n    \"array\": {\n        \"null");
    EXPECT_EQ(json.tail, "           }\n        }\n    }\n}");
  });
}

}  // namespace
}  // namespace CT::Test
