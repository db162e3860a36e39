// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_entity.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "open_trace.h"
#include "trace_builder.h"
#include "written.h"

namespace CT::Test {
namespace {

using Checkpoint::ClassEntry;
using Checkpoint::Function;
using Form = JsonWriter::Form;

// A trace of ADD DATA alone, and a cache for what is in it.
class Entities {
 public:
  explicit Entities(const TraceBuilder& trace) : trace_(trace), view_(trace_.file()) {}

  const File& file() const { return trace_.file(); }
  EntityCache& cache() { return cache_; }

  const CT::ClassEntry* find_class(Ref ref) const { return resolve_class(file(), ref); }
  const CT::Function* find_function(Ref ref) const { return resolve_function(file(), ref); }

  std::shared_ptr<ClassEntry> klass(Ref ref) {
    return cache_.get_class_entry(view_, find_class(ref));
  }
  std::shared_ptr<Function> function(Ref ref) {
    return cache_.get_function(view_, find_function(ref));
  }
  ClassEntry lone_class(Ref ref) const { return {view_, find_class(ref), nullptr, -1}; }
  Function lone_function(Ref ref) const { return {view_, find_function(ref), nullptr, -1}; }

 private:
  OpenTrace trace_;
  CheckpointView view_;
  EntityCache cache_;
};

// Both JSON forms, which must agree.
template <class Entity>
std::string json_of(const Entity& entity) {
  JsonMembers members;
  entity.collect(members);
  const std::string text =
      written_json(Form::compact, [&](JsonWriter& out) { members.write(out); });
  EXPECT_EQ(QJsonDocument(entity.as_json()).toJson(QJsonDocument::Compact).toStdString(), text);
  return text;
}

class Entity : public ::testing::TestWithParam<ByteOrder> {
 protected:
  TraceBuilder trace_ = TraceBuilder(GetParam());
};

INSTANTIATE_TEST_SUITE_P(BothOrders, Entity, ::testing::ValuesIn(both_orders));

TEST_P(Entity, AUserClassHasAFileAndALine) {
  const Ref ref =
      trace_.klass({.name = "App\\A", .flags = 0xF0000001, .file = "/a.php", .line = 3});
  Entities entities(trace_);
  const auto entry = entities.klass(ref);
  EXPECT_EQ(entry->type(), user_type);
  EXPECT_EQ(entry->record(), entities.find_class(ref));
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
    Entities entities(trace_);
    const auto entry = entities.klass(ref);
    EXPECT_EQ(entry->type(), type);
    EXPECT_EQ(entry->flags(), 7U);
    EXPECT_EQ(text_of(entry->filename()), "(absent)");
    EXPECT_EQ(entry->line(), 0U);
    EXPECT_EQ(json_of(*entry), R"({"id":0,"name":"Exception"})");
  }
}

TEST_P(Entity, AUserClassWithoutAFileHasNoneInJson) {
  const Ref absent = trace_.klass({.name = "A", .line = 3});
  const Ref empty = trace_.klass({.name = "A", .file = "", .line = 3});
  Entities entities(trace_);
  EXPECT_EQ(text_of(entities.klass(absent)->filename()), "(absent)");
  EXPECT_EQ(text_of(entities.klass(empty)->filename()), "");
  EXPECT_EQ(entities.klass(absent)->line(), 3U);
  EXPECT_EQ(json_of(*entities.klass(absent)), R"({"id":0,"name":"A"})");
  EXPECT_EQ(json_of(*entities.klass(empty)), R"({"id":1,"name":"A"})");
}

TEST_P(Entity, AClassWithoutANameHasAnEmptyOne) {
  const Ref ref = trace_.klass({});
  EXPECT_EQ(text_of(Entities(trace_).lone_class(ref).name()), "(absent)");
  EXPECT_EQ(json_of(Entities(trace_).lone_class(ref)), R"({"name":""})");
}

TEST_P(Entity, ClassesAreNumberedInOrderOfFirstSightingAndShared) {
  const Ref first = trace_.klass({.name = "A"});
  const Ref second = trace_.klass({.name = "A"});
  Entities entities(trace_);
  const auto entry = entities.klass(second);
  EXPECT_EQ(entry->id(), 0);
  EXPECT_EQ(entities.klass(first)->id(), 1);
  EXPECT_EQ(entities.klass(second), entry);
  ASSERT_EQ(entities.cache().class_entries().size(), 2U);
  EXPECT_EQ(entities.cache().class_entries()[0], entry);
}

TEST_P(Entity, AClassOutsideOfACacheHasNoNumber) {
  const Ref ref = trace_.klass({.name = "A"});
  Entities entities(trace_);
  EXPECT_EQ(entities.lone_class(ref).id(), -1);
  EXPECT_EQ(json_of(entities.lone_class(ref)), R"({"name":"A"})");
  EXPECT_TRUE(entities.cache().class_entries().empty());
}

TEST_P(Entity, DescriptorsNeedTheBytesOfTheirType) {
  const auto found = [&](bool is_class, std::uint8_t type, std::size_t size) {
    TraceBuilder trace(GetParam());
    trace.text("before");
    const Ref ref = trace.add_data(Fields().u8(type).raw(std::string(size - 1, '\0')));
    const Entities entities(trace);
    return is_class ? entities.find_class(ref) != nullptr : entities.find_function(ref) != nullptr;
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
  EXPECT_EQ(Entities(trace_).lone_class(klass).line(), 0x01020304U);
  const Ref function = trace_.function({.name = "last", .class_entry = klass, .line = 77});
  EXPECT_EQ(Entities(trace_).lone_function(function).line_no(), 77U);
  const Ref short_class =
      trace_.add_data(Fields().u8(1).raw(std::string(7, '\0')).u64(name).u32(0xABCDEF));
  EXPECT_EQ(Entities(trace_).lone_class(short_class).flags(), 0xABCDEFU);
}

TEST_P(Entity, ReferencesToNothingFindNothing) {
  trace_.klass({});
  const Entities entities(trace_);
  for (const Ref ref : {Ref{0}, Ref{1}, trace_.add_data_end(), trace_.add_data_end() - 1,
                        TraceBuilder::default_orig_add_data - 1, ~Ref{0}}) {
    EXPECT_EQ(entities.find_class(ref), nullptr) << ref;
    EXPECT_EQ(entities.find_function(ref), nullptr) << ref;
  }
  const Entities nothing{TraceBuilder(GetParam())};
  EXPECT_EQ(nothing.find_class(TraceBuilder::default_orig_add_data), nullptr);
}

TEST_P(Entity, OverlappingDescriptorsAreDistinct) {
  const Ref ref = trace_.add_data(Fields().raw(std::string(100, '\1')));
  Entities entities(trace_);
  EXPECT_EQ(entities.klass(ref)->id(), 0);
  EXPECT_EQ(entities.klass(ref + 1)->id(), 1);
  EXPECT_EQ(entities.klass(ref)->id(), 0);
  // The same bytes may be a class and a function.
  EXPECT_EQ(entities.function(ref)->index(), 0);
  EXPECT_EQ(entities.function(ref + 1)->index(), 1);
}

TEST_P(Entity, ANameMayOverlapItsDescriptorAndEndWithTheSection) {
  const Ref ref = trace_.add_data_end();
  trace_.add_data(Fields().u8(1).raw("abcdefg").u64(ref + 1).u32(0x64636261).raw("xyz"));
  // The reference itself goes on with the text: its lowest byte is 1.
  const std::string stored = GetParam() == ByteOrder::big ? "abcdefg" : "abcdefg\x01";
  EXPECT_EQ(text_of(Entities(trace_).lone_class(ref).name()), stored);
  const Ref tail = trace_.add_data(
      Fields().u8(1).raw("1234567").u64(trace_.add_data_end() + 20).u32(0).raw("no NUL"));
  EXPECT_EQ(text_of(Entities(trace_).lone_class(tail).name()), "no NUL");
}

TEST_P(Entity, AUserFunctionHasAFileAndALine) {
  const Ref klass = trace_.klass({.name = "A"});
  const Ref ref = trace_.function(
      {.name = "run", .class_entry = klass, .flags = 0x80000001, .file = "/f.php", .line = 9});
  Entities entities(trace_);
  const auto function = entities.function(ref);
  EXPECT_TRUE(function->is_user());
  EXPECT_EQ(text_of(function->name()), "run");
  EXPECT_EQ(function->flags(), 0x80000001U);
  EXPECT_EQ(text_of(function->filename()), "/f.php");
  EXPECT_EQ(function->line_no(), 9U);
  EXPECT_EQ(function->record(), nullptr);
  EXPECT_EQ(function->class_entry(), entities.klass(klass));
  EXPECT_EQ(json_of(*function),
            R"({"class":0,"filename":"/f.php","id":0,"line_no":9,"name":"run"})");
}

TEST_P(Entity, ABuiltInFunctionHasNoneThoughItsBytesSaySo) {
  const Ref ref = trace_.function({.type = 1, .name = "strlen", .file = "/f.php", .line = 9});
  const Entities entities(trace_);
  const Function function = entities.lone_function(ref);
  EXPECT_FALSE(function.is_user());
  EXPECT_EQ(text_of(function.filename()), "(absent)");
  EXPECT_EQ(function.line_no(), 0U);
  EXPECT_EQ(json_of(function), R"({"name":"strlen"})");
}

TEST_P(Entity, TheFunctionsTypeIsTakenAsStored) {
  const Ref ref = trace_.function({.type = 2, .name = "f", .rest_of_type = "\1\2\3\4\5\6\7"});
  const Entities entities(trace_);
  const Function function = entities.lone_function(ref);
  EXPECT_EQ(function.type_byte(), 2);
  const std::uint64_t type = function.type();
  EXPECT_EQ(std::string(static_cast<const char*>(static_cast<const void*>(&type)), sizeof type),
            "\2\1\2\3\4\5\6\7");
  const Ref other = trace_.function({.type = 0, .name = "f", .rest_of_type = "\2\2\2\2\2\2\2"});
  EXPECT_FALSE(Entities(trace_).lone_function(other).is_user());
}

TEST_P(Entity, FunctionsAreNumberedAndSharedAndNumberTheirClasses) {
  const Ref classes[] = {trace_.klass({.name = "A"}), trace_.klass({.name = "B"})};
  const Ref in_b = trace_.function({.name = "f", .class_entry = classes[1]});
  const Ref in_a = trace_.function({.name = "f", .class_entry = classes[0]});
  const Ref also_in_b = trace_.function({.name = "g", .class_entry = classes[1]});
  Entities entities(trace_);
  EXPECT_EQ(entities.function(in_b)->class_entry()->id(), 0);
  EXPECT_EQ(entities.function(in_a)->class_entry()->id(), 1);
  EXPECT_EQ(entities.function(also_in_b)->class_entry(), entities.function(in_b)->class_entry());
  EXPECT_EQ(entities.function(also_in_b)->index(), 2);
  EXPECT_EQ(entities.function(in_a), entities.function(in_a));
  EXPECT_EQ(entities.cache().functions().size(), 3U);
  EXPECT_EQ(entities.cache().class_entries().size(), 2U);
}

TEST_P(Entity, AFunctionOutsideOfACacheBringsItsClassWhole) {
  const Ref klass = trace_.klass({.name = "A", .file = "/a.php", .line = 3});
  const Ref ref = trace_.function({.name = "f", .class_entry = klass});
  const Entities entities(trace_);
  const Function function = entities.lone_function(ref);
  EXPECT_EQ(function.index(), -1);
  EXPECT_EQ(json_of(function),
            R"({"class":{"filename":"/a.php","line_no":3,"name":"A"},"name":"f"})");
}

TEST_P(Entity, AFunctionsFullNameBeginsWithItsClass) {
  const Ref method =
      trace_.function({.name = "run", .class_entry = trace_.klass({.name = "App\\A"})});
  const Ref plain = trace_.function({.name = "strlen"});
  const Ref nameless = trace_.function({.class_entry = trace_.klass({.name = "B"})});
  const Entities entities(trace_);
  EXPECT_EQ(entities.lone_function(method).full_name(), QStringLiteral("App\\A::run"));
  EXPECT_EQ(entities.lone_function(plain).full_name(), QStringLiteral("strlen"));
  EXPECT_EQ(entities.lone_function(nameless).full_name(), QStringLiteral("B::"));
}

TEST_P(Entity, AFunctionWhoseClassIsNotWholeHasNone) {
  const Ref ref = trace_.function({.name = "f", .class_entry = trace_.add_data_end() + 40});
  Entities entities(trace_);
  EXPECT_EQ(entities.function(ref)->class_entry(), nullptr);
  EXPECT_EQ(json_of(*entities.function(ref)), R"({"id":0,"name":"f"})");
}

TEST_P(Entity, ConstructorsAreKnownByTheirExactNames) {
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
    EXPECT_EQ(Entities(trace_).lone_function(ref).is_constructor_or_destructor(), expected) << name;
  }
}

TEST_P(Entity, AConstructorsNameMayEndWithTheSection) {
  for (const std::string name : {"__construct", "\xEF\xBB\xBF__destruct"}) {
    TraceBuilder trace(GetParam());
    const Ref ref = trace.add_data(
        Fields().u8(1).raw(std::string(7, '\0')).u64(trace.add_data_end() + 28).u64(0).u32(0));
    trace.add_data(Fields().raw(name));
    EXPECT_TRUE(Entities(trace).lone_function(ref).is_constructor_or_destructor());
  }
}

}  // namespace
}  // namespace CT::Test
