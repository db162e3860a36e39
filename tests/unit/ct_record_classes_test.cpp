// SPDX-License-Identifier: MIT
//
// Which class a record is of.
#include <gtest/gtest.h>

#include <string>
#include <typeindex>
#include <typeinfo>
#include <vector>

#include "codetrace/model/ct_records.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

namespace Made = Checkpoint;
using Checkpoint::make_record;
using Checkpoint::Type;

// The class that a record is shown as; that of Base where there is none.
std::type_index class_of(const Made::Base& record) {
  std::type_index found = typeid(void);
  with_record(record, [&]<class Class>(const Class&) { found = typeid(Class); });
  return found;
}

const std::vector<std::type_index> classes = {typeid(Made::Startup),
                                              typeid(Made::Shutdown),
                                              typeid(Made::FunctionCall),
                                              typeid(Made::FunctionCall),
                                              typeid(Made::FunctionReturn),
                                              typeid(Made::FunctionException),
                                              typeid(Made::IncludeCall),
                                              typeid(Made::IncludeReturn),
                                              typeid(Made::IncludeException),
                                              typeid(Made::SapiWriteStart),
                                              typeid(Made::SapiWriteEnd),
                                              typeid(Made::SapiFlush),
                                              typeid(Made::SapiHeader),
                                              typeid(Made::SapiSendHeaders),
                                              typeid(Made::ScriptExit),
                                              typeid(Made::ScriptError),
                                              typeid(Made::Base),
                                              typeid(Made::UserEvent)};

TEST(Records, EachTypeHasItsClassAndOthersHaveNone) {
  for (std::uint8_t type = 0; type != 32; ++type) {
    TraceBuilder trace;
    const Ref function = trace.function({.name = "f"});
    trace.add(CheckpointDraft::raw(type, Fields().u64(function).u64(0).u64(0).u64(0)));
    OpenTrace open(trace);
    const auto made = make_record(open.view(), nullptr);
    const auto sighted = Made::Base::sighted(open.view(), open.storage().entities());
    ASSERT_EQ(made == nullptr, type == 16 || type > 17) << int{type};
    EXPECT_EQ(class_of(sighted), type < classes.size() ? classes[type] : typeid(void)) << int{type};
    if (made == nullptr) continue;
    EXPECT_EQ(made->type(), static_cast<Type>(type));
    EXPECT_TRUE(made->is_valid()) << int{type};
    EXPECT_EQ(class_of(*made), classes[type]) << int{type};
    with_record(*made, [&]<class Class>(const Class& record) {
      ASSERT_TRUE(Made::record_as<Class>(*made)) << int{type};
      EXPECT_EQ(Made::record_as<Class>(*made)->checkpoint(), record.checkpoint());
    });
  }
}

TEST(Records, OnlyOfTheirOwnClass) {
  for_both_orders("exit\nwrite_end of 1\nreturn of 1", [](OpenTrace& trace) {
    EXPECT_FALSE(Made::record_as<Made::Shutdown>(*trace.record(0)));
    EXPECT_FALSE(Made::record_as<Made::End>(*trace.record(0)));
    EXPECT_TRUE(Made::record_as<Made::End>(*trace.record(1)));
    EXPECT_FALSE(Made::record_as<Made::EndWithValue>(*trace.record(1)));
    EXPECT_FALSE(Made::record_as<Made::FunctionException>(*trace.record(2)));
    EXPECT_TRUE(Made::record_as<Made::EndWithValue>(*trace.record(2)));
    EXPECT_TRUE(Made::record_as<Made::End>(*trace.record(2)));
  });
}

TEST(Records, AVariableIsFilledAgainAndAgain) {
  for_both_orders("error 1 \"a\"\nerror 2 \"b\"\nexit", [](OpenTrace& trace) {
    const auto sighted = [&](std::size_t number) {
      return Made::Base::sighted(trace.view(number), trace.storage().entities());
    };
    Made::Base room = sighted(0);
    ASSERT_TRUE(Made::record_as<Made::ScriptError>(room));
    EXPECT_EQ(text_of(Made::record_as<Made::ScriptError>(room)->error_message()), "a");
    room = sighted(1);
    ASSERT_TRUE(Made::record_as<Made::ScriptError>(room));
    EXPECT_EQ(text_of(Made::record_as<Made::ScriptError>(room)->error_message()), "b");
    room = sighted(2);
    EXPECT_TRUE(Made::record_as<Made::ScriptExit>(room));
    EXPECT_FALSE(Made::record_as<Made::ScriptError>(room));
  });
}

}  // namespace
}  // namespace CT::Test
