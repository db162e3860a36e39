// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_entity.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "entity_table.h"
#include "open_trace.h"
#include "trace_builder.h"

namespace CT::Test {
namespace {

class Entity : public ::testing::TestWithParam<ByteOrder> {
 protected:
  TraceBuilder trace_ = TraceBuilder(GetParam());
};

INSTANTIATE_TEST_SUITE_P(BothOrders, Entity, ::testing::ValuesIn(both_orders));

TEST_P(Entity, AUserClassHasAFileAndALine) {
  const Ref ref =
      trace_.klass({.name = "App\\A", .flags = 0xF0000001, .file = "/a.php", .line = 3});
  Table table(trace_);
  const auto entry = table.klass(ref);
  EXPECT_EQ(entry->type(), user_type);
  EXPECT_EQ(entry->record(), table.find_class(ref));
  EXPECT_EQ(text_of(entry->name()), "App\\A");
  EXPECT_EQ(entry->name().orig_sz, -1);
  EXPECT_EQ(entry->flags(), 0xF0000001U);
  EXPECT_EQ(text_of(entry->filename()), "/a.php");
  EXPECT_EQ(entry->line(), 3U);
  EXPECT_EQ(json_of(*entry), R"({"filename":"/a.php","id":0,"line_no":3,"name":"App\\A"})");
}

TEST_P(Entity, AClassOfTheRuntimeHasNoneThoughItsBytesSaySo) {
  for (const std::uint8_t type : std::initializer_list<std::uint8_t>{0, 1, 3, 255}) {
    const Ref ref = trace_.klass({type, "Exception", 7, "/a.php", 3});
    Table table(trace_);
    const auto entry = table.klass(ref);
    EXPECT_EQ(entry->type(), type);
    EXPECT_EQ(entry->flags(), 7U);
    EXPECT_FALSE(entry->is_user());
    EXPECT_EQ(text_of(entry->filename()), "(absent)");
    EXPECT_EQ(static_cast<std::int32_t>(entry->filename().length), -1);
    EXPECT_EQ(entry->filename_place(), nullptr);
    EXPECT_EQ(entry->line(), 0U);
    EXPECT_EQ(json_of(*entry), R"({"id":0,"name":"Exception"})");
  }
}

TEST_P(Entity, AUserClassWithoutAFileHasNoneInJson) {
  const Ref absent = trace_.klass({.name = "A", .line = 3});
  const Ref empty = trace_.klass({.name = "A", .file = "", .line = 3});
  Table table(trace_);
  EXPECT_EQ(text_of(table.klass(absent)->filename()), "(absent)");
  EXPECT_EQ(text_of(table.klass(empty)->filename()), "");
  EXPECT_EQ(table.klass(absent)->line(), 3U);
  EXPECT_EQ(json_of(*table.klass(absent)), R"({"id":0,"name":"A"})");
  EXPECT_EQ(json_of(*table.klass(empty)), R"({"id":1,"name":"A"})");
}

TEST_P(Entity, AClassWithoutANameHasAnEmptyOne) {
  const Ref ref = trace_.klass({});
  EXPECT_EQ(text_of(Table(trace_).lone_class(ref).name()), "(absent)");
  EXPECT_EQ(json_of(Table(trace_).lone_class(ref)), R"({"name":""})");
}

TEST_P(Entity, ClassesAreNumberedInOrderOfFirstSightingAndShared) {
  const Ref first = trace_.klass({.name = "A"});
  const Ref second = trace_.klass({.name = "A"});
  Table table(trace_);
  const auto entry = table.klass(second);
  EXPECT_EQ(entry->id(), 0);
  EXPECT_EQ(table.klass(first)->id(), 1);
  EXPECT_EQ(table.klass(second), entry);
  ASSERT_EQ(table.entities().classes().size(), 2U);
  EXPECT_EQ(&table.entities().classes()[0], entry);
}

TEST_P(Entity, AClassOfATableWithoutNumbersHasNone) {
  const Ref ref = trace_.klass({.name = "A"});
  Table table(trace_);
  EXPECT_EQ(table.lone_class(ref).id(), -1);
  EXPECT_EQ(json_of(table.lone_class(ref)), R"({"name":"A"})");
  EXPECT_TRUE(table.entities().classes().empty());
}

TEST_P(Entity, DescriptorsNeedTheBytesOfTheirType) {
  const auto found = [&](bool is_class, std::uint8_t type, std::size_t size) {
    TraceBuilder trace(GetParam());
    trace.text("before");
    const Ref ref = trace.add_data(Fields().u8(type).raw(std::string(size - 1, '\0')));
    const Table table(trace);
    return is_class ? table.find_class(ref) != nullptr : table.find_function(ref) != nullptr;
  };
  EXPECT_TRUE(found(true, internal_type, 20));
  EXPECT_FALSE(found(true, internal_type, 19));
  EXPECT_TRUE(found(true, user_type, 36));
  EXPECT_FALSE(found(true, user_type, 35));
  EXPECT_TRUE(found(false, internal_type, 28));
  EXPECT_FALSE(found(false, internal_type, 27));
  EXPECT_TRUE(found(false, user_type, 44));
  EXPECT_FALSE(found(false, user_type, 43));
  EXPECT_FALSE(found(true, user_type, 1));
  EXPECT_FALSE(found(false, internal_type, 1));
}

TEST_P(Entity, ADescriptorAtTheVeryEndIsReadWhole) {
  const Ref name = trace_.text("last");
  const Ref klass = trace_.klass({.name = "last", .flags = 5, .file = "last", .line = 0x01020304});
  EXPECT_EQ(Table(trace_).lone_class(klass).line(), 0x01020304U);
  const Ref function = trace_.function({.name = "last", .class_entry = klass, .line = 77});
  EXPECT_EQ(Table(trace_).lone_function(function).line_no(), 77U);
  const Ref short_class =
      trace_.add_data(Fields().u8(1).raw(std::string(7, '\0')).u64(name).u32(0xABCDEF));
  EXPECT_EQ(Table(trace_).lone_class(short_class).flags(), 0xABCDEFU);
}

TEST_P(Entity, ReferencesToNothingFindNothing) {
  trace_.klass({});
  const Table table(trace_);
  for (const Ref ref : {Ref{0}, Ref{1}, trace_.add_data_end(), trace_.add_data_end() - 1,
                        TraceBuilder::default_orig_add_data - 1, ~Ref{0}}) {
    EXPECT_EQ(table.find_class(ref), nullptr) << ref;
    EXPECT_EQ(table.find_function(ref), nullptr) << ref;
  }
  const Table nothing{TraceBuilder(GetParam())};
  EXPECT_EQ(nothing.find_class(TraceBuilder::default_orig_add_data), nullptr);
}

TEST_P(Entity, OverlappingDescriptorsAreDistinct) {
  const Ref ref = trace_.add_data(Fields().raw(std::string(100, '\1')));
  Table table(trace_);
  EXPECT_EQ(table.klass(ref)->id(), 0);
  EXPECT_EQ(table.klass(ref + 1)->id(), 1);
  EXPECT_EQ(table.klass(ref)->id(), 0);
  // The same bytes may be a class and a function.
  EXPECT_EQ(table.function(ref)->index(), 0);
  EXPECT_EQ(table.function(ref + 1)->index(), 1);
}

TEST_P(Entity, ANameMayOverlapItsDescriptorAndEndWithTheSection) {
  const Ref ref = trace_.add_data_end();
  trace_.add_data(Fields().u8(1).raw("abcdefg").u64(ref + 1).u32(0x64636261).raw("xyz"));
  // The reference itself goes on with the text: its lowest byte is 1.
  const std::string stored = GetParam() == ByteOrder::big ? "abcdefg" : "abcdefg\x01";
  EXPECT_EQ(text_of(Table(trace_).lone_class(ref).name()), stored);
  const Ref tail = trace_.add_data(
      Fields().u8(1).raw("1234567").u64(trace_.add_data_end() + 20).u32(0).raw("no NUL"));
  EXPECT_EQ(text_of(Table(trace_).lone_class(tail).name()), "no NUL");
}

}  // namespace
}  // namespace CT::Test
