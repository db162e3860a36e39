// SPDX-License-Identifier: MIT
//
// Records of calls and the functions that they share.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "codetrace/model/ct_records.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::FunctionCall;
using Checkpoint::make_record;
using Checkpoint::ValueType;

std::string shown(const Checkpoint::KVal& value) { return value.to_string(true).toStdString(); }

std::string shown(const std::vector<Checkpoint::KVal>& values) {
  std::string all;
  for (const Checkpoint::KVal& value : values) all += shown(value) + ';';
  return all;
}

TEST(CallRecord, HasItsFunctionAndArgumentsInOrder) {
  for_both_orders(R"(
    F: function user "run" flags 7 file "/f.php" line 9
    call @1 fn F args [1, "a", [true], null]
  )",
                  [](OpenTrace& trace) {
                    const auto call = trace.record<FunctionCall>();
                    EXPECT_TRUE(call->is_valid());
                    EXPECT_FALSE(call->damage());
                    EXPECT_EQ(text_of(call->function()->name()), "run");
                    EXPECT_EQ(call->function()->flags(), 7U);
                    EXPECT_EQ(text_of(call->function()->filename()), "/f.php");
                    EXPECT_EQ(call->function()->line_no(), 9U);
                    EXPECT_EQ(call->function()->class_entry(), nullptr);
                    EXPECT_TRUE(call->function()->is_user());
                    EXPECT_EQ(call->arg_count(), 4U);
                    EXPECT_EQ(shown(call->args()), "1;\"a\";array(0 => true);null;");
                    EXPECT_FALSE(call->has_this());
                    EXPECT_EQ(call->this_value().type(), ValueType::undef);
                  });
}

TEST(CallRecord, CallsOfOneDescriptorShareTheFunction) {
  for_both_orders(R"(
    F: function user "f"
    G: function user "f"
    call fn F
    call fn F args [1]
    call fn G
  )",
                  [](OpenTrace& trace) {
                    const auto first = trace.record<FunctionCall>(0);
                    const auto again = trace.record<FunctionCall>(1);
                    const auto other = trace.record<FunctionCall>(2);
                    EXPECT_EQ(first->function(), again->function());
                    EXPECT_NE(first->function(), other->function());
                    EXPECT_EQ(first->function()->index(), 0);
                    EXPECT_EQ(other->function()->index(), 1);
                    ASSERT_EQ(trace.storage().functions().size(), 2U);
                    EXPECT_EQ(&trace.storage().functions()[1], other->function());
                  });
}

TEST(CallRecord, MethodWithoutArgumentsHasThis) {
  for_both_orders(R"(
    C: class user "A"
    F: function user "run" class C
    method fn F this obj(C, 7)
  )",
                  [](OpenTrace& trace) {
                    const auto call = trace.record<FunctionCall>();
                    EXPECT_TRUE(call->has_this());
                    EXPECT_EQ(shown(call->this_value()), "object(A#7)");
                    EXPECT_EQ(call->arg_count(), 0U);
                    EXPECT_TRUE(call->args().empty());
                    EXPECT_EQ(call->this_value().class_entry(), call->function()->class_entry());
                  });
}

TEST(CallRecord, StaticCallHasAClassAndNoThis) {
  for_both_orders(R"(
    C: class internal "A"
    F: function internal "make" class C
    call fn F args [5]
  )",
                  [](OpenTrace& trace) {
                    const auto call = trace.record<FunctionCall>();
                    ASSERT_NE(call->function()->class_entry(), nullptr);
                    EXPECT_EQ(text_of(call->function()->class_entry()->name()), "A");
                    EXPECT_EQ(call->function()->class_entry()->id(), 0);
                    EXPECT_FALSE(call->has_this());
                    EXPECT_EQ(shown(call->args()), "5;");
                  });
}

TEST(CallRecord, WithoutATableItHasAFunctionOfItsOwn) {
  for_both_orders(R"(
    C: class user "A"
    F: function user "f" class C
    call fn F args [obj(C, 1)]
  )",
                  [](OpenTrace& trace) {
                    const auto call = kept_as<FunctionCall>(make_record(trace.view(), nullptr));
                    EXPECT_EQ(call->function()->index(), -1);
                    EXPECT_EQ(call->function()->class_entry()->id(), -1);
                    EXPECT_EQ(call->args().at(0).class_entry()->id(), -1);
                    EXPECT_TRUE(trace.storage().functions().empty());
                    EXPECT_TRUE(trace.storage().class_entries().empty());
                  });
}

TEST(CallRecord, OnlyTheExactNamesAreConstructorsAndDestructors) {
  const auto is_special = [](std::string_view name) {
    TraceBuilder trace;
    trace.add(CheckpointDraft::function_call(trace.function({.name = name})));
    OpenTrace open(trace);
    return open.record<FunctionCall>()->function()->is_constructor_or_destructor();
  };
  EXPECT_TRUE(is_special("__construct"));
  EXPECT_TRUE(is_special("__destruct"));
  EXPECT_TRUE(is_special("\xEF\xBB\xBF__construct"));
  for (const std::string_view name :
       {"__Construct", "__CONSTRUCT", "__constructor", "__construc", "__destruct ", "_destruct",
        "\xEF\xBB\xBF\xEF\xBB\xBF__destruct"}) {
    EXPECT_FALSE(is_special(name)) << name;
  }
  EXPECT_FALSE(is_special({}));
}

TEST(CallRecord, NameThatEndsWithAddDataIsComparedAsFarAsItGoes) {
  for (const std::string_view name : {"__construct", "__construc"}) {
    TraceBuilder trace;
    const Ref function = trace.add_data_end() + 5;
    trace.add_data(Fields().raw("12345").u8(2).raw(std::string(7, '\0')).u64(function + 44));
    trace.add_data(Fields().u64(0).u32(0).u32(0).u64(0).u32(0).raw(name));
    trace.add(CheckpointDraft::function_call(function));
    OpenTrace open(trace);
    const auto call = open.record<FunctionCall>();
    ASSERT_TRUE(call->is_valid());
    EXPECT_EQ(text_of(call->function()->name()), name);
    EXPECT_EQ(call->function()->is_constructor_or_destructor(), name == "__construct");
  }
}

TEST(CallRecord, BuiltInFunctionHasNoPlaceOfDefinition) {
  constexpr std::uint8_t types[] = {0, 1, 3, 4, 255};
  for (const std::uint8_t type : types) {
    for (const ByteOrder order : both_orders) {
      TraceBuilder trace(order);
      const Ref function =
          trace.function({.type = type, .name = "strlen", .file = "/f.php", .line = 9});
      trace.add(CheckpointDraft::function_call(function));
      OpenTrace open(trace);
      const auto call = open.record<FunctionCall>();
      EXPECT_EQ(call->function()->type_byte(), type);
      EXPECT_FALSE(call->function()->is_user());
      EXPECT_EQ(text_of(call->function()->filename()), "(absent)");
      EXPECT_EQ(call->function()->line_no(), 0U);
    }
  }
}

TEST(CallRecord, FirstEightBytesAreTakenAsStoredInBothOrders) {
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order);
    constexpr std::string_view stored = "\x02\x11\x22\x33\x44\x55\x66\x77";
    trace.add(CheckpointDraft::function_call(
        trace.function({.name = "f", .rest_of_type = stored.substr(1)})));
    OpenTrace open(trace);
    const auto call = open.record<FunctionCall>();
    const std::uint64_t type = call->function()->type();
    EXPECT_EQ(std::memcmp(&type, stored.data(), sizeof type), 0);
    EXPECT_EQ(call->function()->type_byte(), 2);
    EXPECT_EQ(call->function()->record(), nullptr);
  }
}

TEST(CallRecord, WithoutDescriptorIsInvalidAndReadsNothing) {
  for_both_orders(R"(
    C: class user "A"
    T: text "end"
    call fn none args [1]
    method fn T+4 this obj(C, 1) args [obj(C, 2)]
    call fn 0x1 args [1]
  )",
                  [](OpenTrace& trace) {
                    for (std::size_t number = 0; number != 3; ++number) {
                      const auto call = trace.record<FunctionCall>(number);
                      EXPECT_FALSE(call->is_valid());
                      EXPECT_EQ(call->function(), nullptr);
                      EXPECT_FALSE(call->has_this());
                      EXPECT_EQ(call->this_value().type(), ValueType::undef);
                      EXPECT_EQ(call->arg_count(), 0U);
                      EXPECT_TRUE(call->args().empty());
                      EXPECT_FALSE(call->damage());
                    }
                    EXPECT_TRUE(trace.storage().functions().empty());
                    EXPECT_TRUE(trace.storage().class_entries().empty());
                  });
}

TEST(CallRecord, FileWithoutAddDataHasNoDescriptors) {
  for_both_orders("call fn 0x20000000", [](OpenTrace& trace) {
    EXPECT_EQ(trace.file().add_data().data(), nullptr);
    EXPECT_FALSE(trace.record()->is_valid());
  });
}

TEST(CallRecord, DescriptorNeedsTheBytesOfItsTypeAndNoMore) {
  for (const ByteOrder order : both_orders) {
    for (const std::uint8_t type : {internal_type, user_type}) {
      const std::size_t needed = type == user_type ? 44 : 28;
      for (const std::size_t size : {needed - 1, needed}) {
        TraceBuilder trace(order);
        const Ref function = trace.function({.type = type, .flags = 5, .line = 6});
        trace.cut_add_data(44 - size);
        trace.add(CheckpointDraft::function_call(function));
        OpenTrace open(trace);
        const auto call = open.record<FunctionCall>();
        ASSERT_EQ(call->is_valid(), size == needed);
        if (!call->is_valid()) continue;
        EXPECT_EQ(call->function()->flags(), 5U);
        EXPECT_EQ(call->function()->line_no(), type == user_type ? 6U : 0U);
      }
    }
  }
}

TEST(CallRecord, ClassNeedsTheBytesOfItsTypeAndIsNoneWithoutThem) {
  for (const ByteOrder order : both_orders) {
    for (const std::uint8_t type : {internal_type, user_type}) {
      const std::size_t needed = type == user_type ? 36 : 20;
      for (const std::size_t size : {needed - 1, needed}) {
        TraceBuilder trace(order);
        const Ref klass = trace.add_data_end() + 44;
        const Ref function = trace.function({.class_entry = klass});
        EXPECT_EQ(trace.klass({.type = type, .flags = 3}), klass);
        trace.cut_add_data(36 - size);
        trace.add(CheckpointDraft::function_call(function));
        OpenTrace open(trace);
        const auto call = open.record<FunctionCall>();
        EXPECT_TRUE(call->is_valid());
        EXPECT_EQ(call->function()->class_entry() != nullptr, size == needed);
        EXPECT_EQ(open.storage().class_entries().size(), size == needed ? 1U : 0U);
      }
    }
  }
}

TEST(CallRecord, CountBeyondThePayloadKeepsWhatIsThere) {
  for_both_orders(R"(
    F: function user "f"
    call fn F args [1, 2] count 4294967295
    call fn F args [1, 2] count 1
    call fn F count 3
  )",
                  [](OpenTrace& trace) {
                    const auto many = trace.record<FunctionCall>(0);
                    EXPECT_EQ(many->arg_count(), UINT32_MAX);
                    EXPECT_EQ(shown(many->args()), "1;2;");
                    EXPECT_EQ(many->damage(), 8U + 4 + 9 + 9);
                    const auto fewer = trace.record<FunctionCall>(1);
                    EXPECT_EQ(shown(fewer->args()), "1;");
                    EXPECT_FALSE(fewer->damage());
                    EXPECT_TRUE(trace.record<FunctionCall>(2)->is_valid());
                    EXPECT_TRUE(trace.record<FunctionCall>(2)->args().empty());
                  });
}

}  // namespace
}  // namespace CT::Test
