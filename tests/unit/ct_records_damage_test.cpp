// SPDX-License-Identifier: MIT
//
// What is left of a record whose payload was cut short, at every byte.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codetrace/model/ct_records.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

namespace Made = Checkpoint;
using Checkpoint::make_record;

std::string shown(const Checkpoint::KVal& value) { return value.to_string(true).toStdString(); }

// Decodes the last checkpoint that `add` makes, cut to every size from 1 byte to all of them, in
// both byte orders, and calls `check` with the record, its storage and the size. A record is
// damaged unless everything up to `whole` bytes is there.
template <class Class, class Add, class Check>
void cut_everywhere(Add add, std::size_t whole, Check check) {
  for (const ByteOrder order : both_orders) {
    SCOPED_TRACE(order == ByteOrder::big ? "big-endian" : "little-endian");
    for (std::size_t kept = 1; kept <= whole; ++kept) {
      SCOPED_TRACE(kept);
      TraceBuilder trace(order);
      CheckpointDraft draft = add(trace);
      ASSERT_EQ(draft.encode(order).size() - 4, whole);
      trace.add(draft.keep(kept));
      OpenTrace open(trace);
      const auto record = open.template record<Class>();
      EXPECT_EQ(record->view().size(), kept);
      if (record->damage()) {
        EXPECT_LE(*record->damage(), kept);
      }
      check(*record, open.storage(), kept);
    }
  }
}

// Of the texts behind references of eight bytes each, as many as are whole.
std::string texts(std::initializer_list<std::string_view> all, std::size_t kept) {
  std::string result;
  for (const std::string_view text : all) {
    result += kept >= 8 ? text : "(absent)";
    result += ';';
    kept -= std::min<std::size_t>(kept, 8);
  }
  return result;
}

TEST(CutRecord, StartupKeepsItsWholeReferences) {
  cut_everywhere<Made::Startup>(
      [](TraceBuilder& trace) {
        return CheckpointDraft::startup(trace.text("a"), trace.text("b"), trace.text("c"),
                                        trace.text("d"));
      },
      32,
      [](const Made::Startup& record, Storage&, std::size_t kept) {
        EXPECT_TRUE(record.is_valid());
        EXPECT_EQ(text_of(record.url()) + ';' + text_of(record.orig_uri()) + ';' +
                      text_of(record.host()) + ';' + text_of(record.method()) + ';',
                  texts({"a", "b", "c", "d"}, kept));
        EXPECT_EQ(record.damage(), kept == 32 ? std::nullopt : std::optional(kept / 8 * 8));
      });
}

TEST(CutRecord, CommonFieldsThatAreNotWholeAreGoneAndTheRecordIsValid) {
  cut_everywhere<Made::IncludeCall>(
      [](TraceBuilder& trace) {
        return CheckpointDraft::include_call(trace.text("p"))
            .time(1, 2)
            .memory(3)
            .location(trace.text("f"), 4);
      },
      40,
      [](const Made::IncludeCall& record, Storage&, std::size_t kept) {
        EXPECT_TRUE(record.is_valid());
        EXPECT_EQ(record.flags(),
                  (kept >= 12 ? 1 : 0) + (kept >= 20 ? 2 : 0) + (kept >= 32 ? 4 : 0));
        EXPECT_EQ(text_of(record.include()), kept == 40 ? "p" : "(absent)");
        EXPECT_EQ(record.damage().has_value(), kept < 40);
      });
}

TEST(CutRecord, EndIsInvalidWithoutItsStart) {
  cut_everywhere<Made::End>(
      [](TraceBuilder& trace) { return CheckpointDraft::include_return(trace.data_end()).time(1); },
      20,
      [](const Made::End& record, Storage&, std::size_t kept) {
        EXPECT_EQ(record.is_valid(), kept == 20);
        EXPECT_EQ(record.start(),
                  kept == 20 ? std::bit_cast<std::uintptr_t>(record.checkpoint()) : 0U);
        EXPECT_EQ(record.damage().has_value(), kept < 20);
      });
}

// Behind the start, at payload offset 8: the array's code and count, its key at 13, its value
// at 19.
std::string expected_map(std::size_t kept) {
  if (kept < 13) return "undef";
  if (kept < 19) return "array()";
  return kept < 25 ? "array(\"k\" => undef)" : "array(\"k\" => \"v\")";
}

TEST(CutRecord, EndsWithAValueKeepWhatIsWholeOfIt) {
  const Fields value = value::map({{value::string("k"), value::string("v")}});
  const auto start_and_value = [&](std::uint8_t type) {
    return [&value, type](TraceBuilder& trace) {
      return CheckpointDraft::raw(type, Fields().u64(trace.data_end()).append(value));
    };
  };
  const auto check = [](const Made::EndWithValue& record, Storage&, std::size_t kept) {
    EXPECT_EQ(record.is_valid(), kept >= 8);
    EXPECT_EQ(shown(record.value()), expected_map(kept));
    EXPECT_EQ(record.damage().has_value(), kept < 25);
  };
  cut_everywhere<Made::FunctionReturn>(start_and_value(4), 25, check);
  cut_everywhere<Made::FunctionException>(start_and_value(5), 25, check);
  cut_everywhere<Made::IncludeException>(start_and_value(8), 25, check);
}

TEST(CutRecord, ReturnedScalarThatIsNotWholeIsUndef) {
  cut_everywhere<Made::FunctionReturn>(
      [](TraceBuilder& trace) {
        return CheckpointDraft::function_return(trace.data_end(), value::integer(5));
      },
      17,
      [](const Made::FunctionReturn& record, Storage&, std::size_t kept) {
        EXPECT_EQ(record.is_valid(), kept >= 8);
        EXPECT_EQ(shown(record.value()), kept == 17 ? "5" : "undef");
        EXPECT_EQ(record.damage().has_value(), kept < 17);
      });
}

TEST(CutRecord, WrittenBodyIsWholeOrAbsent) {
  cut_everywhere<Made::SapiWriteStart>(
      [](TraceBuilder&) {
        return CheckpointDraft::sapi_write_start(Fields().cut_string("abc", 9));
      },
      11,
      [](const Made::SapiWriteStart& record, Storage&, std::size_t kept) {
        EXPECT_TRUE(record.is_valid());
        EXPECT_EQ(text_of(record.body()), kept == 11 ? "abc" : "(absent)");
        EXPECT_EQ(record.body().orig_sz, kept == 11 ? 9 : -1);
        EXPECT_EQ(record.damage().has_value(), kept < 11);
      });
}

TEST(CutRecord, HeaderKeepsItsOperation) {
  cut_everywhere<Made::SapiHeader>(
      [](TraceBuilder&) { return CheckpointDraft::sapi_header(2, Fields().cut_string("X: 1")); }, 9,
      [](const Made::SapiHeader& record, Storage&, std::size_t kept) {
        EXPECT_TRUE(record.is_valid());
        EXPECT_EQ(record.op(), 2);
        EXPECT_EQ(text_of(record.header()), kept == 9 ? "X: 1" : "(absent)");
        EXPECT_EQ(record.damage().has_value(), kept < 9);
      });
}

TEST(CutRecord, HeaderWhoseOperationIsCutHasOperationZero) {
  cut_everywhere<Made::SapiHeader>(
      [](TraceBuilder&) { return CheckpointDraft::sapi_header(3).time(1); }, 13,
      [](const Made::SapiHeader& record, Storage&, std::size_t kept) {
        EXPECT_TRUE(record.is_valid());
        EXPECT_EQ(record.op(), kept == 13 ? 3 : 0);
        EXPECT_EQ(text_of(record.header()), "(absent)");
        EXPECT_EQ(record.damage().has_value(), kept < 13);
      });
}

TEST(CutRecord, InlineTextIsKeptWithoutItsNul) {
  cut_everywhere<Made::SapiSendHeaders>(
      [](TraceBuilder&) { return CheckpointDraft::sapi_send_headers(200, "OK"); }, 15,
      [](const Made::SapiSendHeaders& record, Storage&, std::size_t kept) {
        EXPECT_TRUE(record.is_valid());
        EXPECT_EQ(record.code(), kept >= 4 ? 200U : 0U);
        EXPECT_EQ(text_of(record.status()), kept >= 14 ? "OK" : "(absent)");
        EXPECT_EQ(record.damage().has_value(), kept < 15);
      });
  cut_everywhere<Made::ScriptError>(
      [](TraceBuilder&) { return CheckpointDraft::script_error(8, "bad"); }, 16,
      [](const Made::ScriptError& record, Storage&, std::size_t kept) {
        EXPECT_TRUE(record.is_valid());
        EXPECT_EQ(record.error_num(), kept >= 4 ? 8U : 0U);
        EXPECT_EQ(text_of(record.error_message()), kept >= 15 ? "bad" : "(absent)");
        EXPECT_EQ(record.damage().has_value(), kept < 16);
      });
}

TEST(CutRecord, UserEventKeepsItsNameAndLosesItsSequence) {
  cut_everywhere<Made::UserEvent>(
      [](TraceBuilder& trace) { return CheckpointDraft::user_event(trace.text("Slow"), 77); }, 12,
      [](const Made::UserEvent& record, Storage&, std::size_t kept) {
        EXPECT_TRUE(record.is_valid());
        EXPECT_EQ(text_of(record.event_name()), kept >= 8 ? "Slow" : "(absent)");
        EXPECT_EQ(record.event_sequence(), kept == 12 ? 77U : 0U);
        EXPECT_EQ(record.damage().has_value(), kept < 12);
      });
}

// Arguments at payload offsets 12 (long), 21 (string) and 29 (a list of true), which ends at 44.
std::string expected_arguments(std::size_t kept) {
  std::string all;
  if (kept >= 21) all += "1;";
  if (kept >= 29) all += "\"abc\";";
  if (kept >= 34)
    all += kept < 43 ? "array();" : kept < 44 ? "array(0 => undef);" : "array(0 => true);";
  return all;
}

TEST(CutRecord, CallDropsArgumentsThatAreMissingOrCutScalars) {
  cut_everywhere<Made::FunctionCall>(
      [](TraceBuilder& trace) {
        return CheckpointDraft::function_call(
            trace.function({.name = "f"}),
            {value::integer(1), value::string("abc"), value::list({value::boolean(true)})});
      },
      44,
      [](const Made::FunctionCall& call, Storage& storage, std::size_t kept) {
        EXPECT_EQ(call.is_valid(), kept >= 8);
        EXPECT_EQ(call.function() != nullptr, kept >= 8);
        EXPECT_EQ(storage.functions().size(), kept >= 8 ? 1U : 0U);
        EXPECT_EQ(call.arg_count(), kept >= 12 ? 3U : 0U);
        std::string arguments;
        for (const Checkpoint::KVal& value : call.args()) arguments += shown(value) + ';';
        EXPECT_EQ(arguments, expected_arguments(kept));
        EXPECT_EQ(call.damage().has_value(), kept < 44);
      });
}

TEST(CutRecord, MethodCallNumbersWhatItReached) {
  // The descriptor ends at 8, `this` at 21, the count at 25, the argument at 38.
  cut_everywhere<Made::FunctionCall>(
      [](TraceBuilder& trace) {
        const Ref first = trace.klass({.name = "A"});
        const Ref second = trace.klass({.name = "B"});
        return CheckpointDraft::method_call(trace.function({.name = "f"}), value::object(first, 1),
                                            {value::object(second, 2)});
      },
      38,
      [](const Made::FunctionCall& call, Storage& storage, std::size_t kept) {
        EXPECT_EQ(call.is_valid(), kept >= 8);
        EXPECT_EQ(call.has_this(), kept >= 8);
        EXPECT_EQ(shown(call.this_value()), kept >= 21 ? "object(A#1)" : "undef");
        EXPECT_EQ(call.arg_count(), kept >= 25 ? 1U : 0U);
        EXPECT_EQ(call.args().size(), kept == 38 ? 1U : 0U);
        EXPECT_EQ(storage.class_entries().size(), (kept >= 21 ? 1U : 0U) + (kept == 38 ? 1U : 0U));
        EXPECT_EQ(call.damage().has_value(), kept < 38);
      });
}

TEST(CutRecord, RecordMadeWithoutSightingEntersNothing) {
  for_both_orders(R"(
    C: class user "A"
    F: function user "f"
    method fn F this null args [obj(C, 1), "abc"] keep 33
    return of 1 value [obj(C, 1), "abc"] keep 40
  )",
                  [](OpenTrace& trace) {
                    for (std::size_t number = 0; number != 2; ++number) {
                      const CheckpointView first = trace.view(number);
                      const auto entities = Entities::make(trace.file());
                      const auto sighted = make_record(first, entities.get());
                      EXPECT_TRUE(sighted->damage());
                      EXPECT_EQ(entities->classes().size(), 1U);
                      const auto others = Entities::make(trace.file());
                      const auto view = CheckpointView::at(trace.file(), first.offset());
                      // Where its function is missing, a call is not valid.
                      EXPECT_EQ(Made::Base(view, *others).is_valid(), number == 1);
                      others->add(resolve_function(trace.file(), trace.view(0).cursor().u64()));
                      const Made::Base again(view, *others);
                      EXPECT_TRUE(again.is_valid());
                      EXPECT_EQ(again.damage(), sighted->damage());
                      EXPECT_TRUE(others->classes().empty());
                      EXPECT_EQ(others->functions().size(), 1U);
                    }
                  });
}

}  // namespace
}  // namespace CT::Test
