// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "codetrace/model/ct_entity.h"
#include "entity_table.h"
#include "open_trace.h"
#include "trace_builder.h"

namespace CT::Test {
namespace {

using Checkpoint::Function;

class FunctionEntity : public ::testing::TestWithParam<ByteOrder> {
 protected:
  TraceBuilder trace_ = TraceBuilder(GetParam());
};

INSTANTIATE_TEST_SUITE_P(BothOrders, FunctionEntity, ::testing::ValuesIn(both_orders));

TEST_P(FunctionEntity, AUserFunctionHasAFileAndALine) {
  const Ref klass = trace_.klass({.name = "A"});
  const Ref ref = trace_.function(
      {.name = "run", .class_entry = klass, .flags = 0x80000001, .file = "/f.php", .line = 9});
  Table table(trace_);
  const auto function = table.function(ref);
  EXPECT_TRUE(function->is_user());
  EXPECT_EQ(text_of(function->name()), "run");
  EXPECT_EQ(function->flags(), 0x80000001U);
  EXPECT_EQ(text_of(function->filename()), "/f.php");
  EXPECT_EQ(function->line_no(), 9U);
  EXPECT_EQ(function->record(), nullptr);
  EXPECT_EQ(function->class_entry(), table.klass(klass));
  EXPECT_EQ(json_of(*function),
            R"({"class":0,"filename":"/f.php","id":0,"line_no":9,"name":"run"})");
}

TEST_P(FunctionEntity, ABuiltInFunctionHasNoneThoughItsBytesSaySo) {
  const Ref ref = trace_.function({.type = 1, .name = "strlen", .file = "/f.php", .line = 9});
  const Table table(trace_);
  const Function function = table.lone_function(ref);
  EXPECT_FALSE(function.is_user());
  EXPECT_EQ(text_of(function.filename()), "(absent)");
  EXPECT_EQ(function.line_no(), 0U);
  EXPECT_EQ(json_of(function), R"({"name":"strlen"})");
}

TEST_P(FunctionEntity, TheFunctionsTypeIsTakenAsStored) {
  const Ref ref = trace_.function({.type = 2, .name = "f", .rest_of_type = "\1\2\3\4\5\6\7"});
  const Table table(trace_);
  const Function function = table.lone_function(ref);
  EXPECT_EQ(function.type_byte(), 2);
  const std::uint64_t type = function.type();
  EXPECT_EQ(std::string(static_cast<const char*>(static_cast<const void*>(&type)), sizeof type),
            "\2\1\2\3\4\5\6\7");
  const Ref other = trace_.function({.type = 0, .name = "f", .rest_of_type = "\2\2\2\2\2\2\2"});
  EXPECT_FALSE(Table(trace_).lone_function(other).is_user());
}

TEST_P(FunctionEntity, FunctionsAreNumberedAndSharedAndNumberTheirClasses) {
  const Ref classes[] = {trace_.klass({.name = "A"}), trace_.klass({.name = "B"})};
  const Ref in_b = trace_.function({.name = "f", .class_entry = classes[1]});
  const Ref in_a = trace_.function({.name = "f", .class_entry = classes[0]});
  const Ref also_in_b = trace_.function({.name = "g", .class_entry = classes[1]});
  Table table(trace_);
  EXPECT_EQ(table.function(in_b)->class_entry()->id(), 0);
  EXPECT_EQ(table.function(in_a)->class_entry()->id(), 1);
  EXPECT_EQ(table.function(also_in_b)->class_entry(), table.function(in_b)->class_entry());
  EXPECT_EQ(table.function(also_in_b)->index(), 2);
  EXPECT_EQ(table.function(in_a), table.function(in_a));
  EXPECT_EQ(table.entities().functions().size(), 3U);
  EXPECT_EQ(table.entities().classes().size(), 2U);
}

TEST_P(FunctionEntity, AFunctionOfATableWithoutNumbersBringsItsClassWhole) {
  const Ref klass = trace_.klass({.name = "A", .file = "/a.php", .line = 3});
  const Ref ref = trace_.function({.name = "f", .class_entry = klass});
  const Table table(trace_);
  const Function function = table.lone_function(ref);
  EXPECT_EQ(function.index(), -1);
  EXPECT_EQ(json_of(function),
            R"({"class":{"filename":"/a.php","line_no":3,"name":"A"},"name":"f"})");
}

TEST_P(FunctionEntity, AFunctionsFullNameBeginsWithItsClass) {
  const Ref method =
      trace_.function({.name = "run", .class_entry = trace_.klass({.name = "App\\A"})});
  const Ref plain = trace_.function({.name = "strlen"});
  const Ref nameless = trace_.function({.class_entry = trace_.klass({.name = "B"})});
  const Table table(trace_);
  EXPECT_EQ(table.lone_function(method).full_name(), QStringLiteral("App\\A::run"));
  EXPECT_EQ(table.lone_function(plain).full_name(), QStringLiteral("strlen"));
  EXPECT_EQ(table.lone_function(nameless).full_name(), QStringLiteral("B::"));
}

TEST_P(FunctionEntity, AFunctionWhoseClassIsNotWholeHasNone) {
  const Ref ref = trace_.function({.name = "f", .class_entry = trace_.add_data_end() + 40});
  Table table(trace_);
  EXPECT_EQ(table.function(ref)->class_entry(), nullptr);
  EXPECT_EQ(json_of(*table.function(ref)), R"({"id":0,"name":"f"})");
}

TEST_P(FunctionEntity, ConstructorsAreKnownByTheirExactNames) {
  const std::vector<std::pair<std::string, bool>> rows = {
      {"__construct", true},
      {"__destruct", true},
      {"__Construct", false},
      {"__DESTRUCT", false},
      {"__construct ", false},
      {"__construc", false},
      {"__constructor", false},
      {"_construct", false},
      {"", false},
      {"\xEF\xBB\xBF__construct", true},  // a byte-order mark is no part of a text
      {"\xEF\xBB\xBF__destruct", true},
      {"\xEF\xBB\xBF\xEF\xBB\xBF__construct", false},
      {"\xEF\xBB\xBF__constructor", false},
      {"__construct\x80", false}};
  for (const auto& [name, expected] : rows) {
    const Ref ref = trace_.function({.name = name});
    EXPECT_EQ(Table(trace_).lone_function(ref).is_constructor_or_destructor(), expected) << name;
  }
}

TEST_P(FunctionEntity, AConstructorsNameMayEndWithTheSection) {
  for (const std::string name : {"__construct", "\xEF\xBB\xBF__destruct"}) {
    TraceBuilder trace(GetParam());
    const Ref ref = trace.add_data(
        Fields().u8(1).raw(std::string(7, '\0')).u64(trace.add_data_end() + 28).u64(0).u32(0));
    trace.add_data(Fields().raw(name));
    EXPECT_TRUE(Table(trace).lone_function(ref).is_constructor_or_destructor());
  }
}

}  // namespace
}  // namespace CT::Test
