// SPDX-License-Identifier: MIT
//
// Each error that is a caller's mistake.
#include <gtest/gtest.h>

#include <string_view>

#include "expect_error.h"
#include "trace_builder.h"
#include "written_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Type;
using Write::Error;
using Write::TraceWriter;

TEST(WriteMisuse, FieldsHaveToBeThoseOfTheType) {
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::STARTUP);
    writer.reference(0);
    writer.reference(0);
    writer.reference(0);
  });
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::INCLUDE_CALL);
    writer.reference(0);
    writer.reference(0);
  });
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::USER_EVENT);
    writer.u32(1);
  });
  expect_error(Error::wrong_field, [](TraceWriter& writer) { writer.begin(Type::METHOD_CALL); });
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::METHOD_CALL);
    writer.reference(0);
  });
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::FUNCTION_RETURN);
    writer.reference(0);
    writer.null();
    writer.null();
  });
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::SCRIPT_EXIT);
    writer.null();
  });
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::SHUTDOWN);
    writer.arguments();
  });
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::SCRIPT_ERROR);
    writer.u32(1);
    writer.cut_text("");
  });
  expect_error(Error::wrong_field, [](TraceWriter& writer) {
    writer.begin(Type::INCLUDE_CALL);
    writer.raw(as_bytes("12345678"));
    writer.reference(0);
  });
}

TEST(WriteMisuse, ArraysHaveToBeClosedAsTheyWereOpened) {
  const auto call = [](TraceWriter& writer) {
    writer.begin(Type::FUNCTION_CALL);
    writer.reference(0);
  };
  expect_error(Error::unbalanced, [&](TraceWriter& writer) {
    call(writer);
    writer.begin_array();
  });
  expect_error(Error::unbalanced, [&](TraceWriter& writer) {
    call(writer);
    writer.end_array();
  });
  expect_error(Error::unbalanced, [&](TraceWriter& writer) {
    call(writer);
    writer.null();
    writer.end_array();
  });
  expect_error(Error::unbalanced, [&](TraceWriter& writer) {
    call(writer);
    writer.begin_array();
    writer.raw({});
  });
  expect_error(Error::unbalanced, [&](TraceWriter& writer) {
    call(writer);
    writer.begin_array();
    writer.reference(0);
  });
  expect_error(Error::unbalanced, [&](TraceWriter& writer) {
    call(writer);
    writer.cut_rest();
  });
  expect_error(Error::unbalanced,
               [&](TraceWriter& writer) {
                 call(writer);
                 writer.begin_array();
                 writer.begin_array();
                 writer.end_array();
               },
               {.depth = 1});
}

TEST(WriteMisuse, EachKeyHasAValue) {
  const auto call = [](TraceWriter& writer) {
    writer.begin(Type::FUNCTION_CALL);
    writer.reference(0);
  };
  expect_error(Error::key_alone, [&](TraceWriter& writer) {
    call(writer);
    writer.begin_array();
    writer.null();
    writer.end_array();
  });
  expect_error(Error::key_alone, [&](TraceWriter& writer) {
    call(writer);
    writer.begin_array();
    writer.null();
    writer.cut_rest();
  });
}

TEST(WriteMisuse, NothingIsWrittenOutsideOfARecord) {
  expect_error(Error::no_record, [](TraceWriter& writer) {
    writer.reference(1);
    writer.u32(1);
    writer.cut_text("a");
    writer.inline_text("a");
    writer.header_line(0, "a");
    writer.raw(as_bytes("a"));
    writer.arguments();
    writer.integer(1);
    writer.begin_array();
    writer.cut_array();
    writer.cut_rest();
    writer.end_array();
  });
}

TEST(WriteMisuse, RecordsDoNotBeginWithinEachOther) {
  expect_error(Error::record_open, [](TraceWriter& writer) {
    writer.begin(Type::SCRIPT_EXIT);
    writer.begin(Type::SCRIPT_EXIT);
  });
  expect_error(Error::record_open, [](TraceWriter& writer) {
    writer.begin(Type::SCRIPT_EXIT);
    EXPECT_FALSE(writer.copy(as_bytes(std::string_view("\x0E\0\0\0", 4))));
  });
  TraceWriter writer(options_of(ByteOrder::little));
  writer.begin(Type::SCRIPT_EXIT);
  StringDestination destination;
  EXPECT_FALSE(writer.finish(destination));
  EXPECT_EQ(writer.error(), Error::record_open);
  EXPECT_EQ(destination.text, "");
  EXPECT_TRUE(writer.end());
  EXPECT_TRUE(writer.finish(destination));
}

TEST(WriteMisuse, TheTypeHasToHaveARow) {
  for (const Type type : {Type::INVALID, static_cast<Type>(31), static_cast<Type>(200)}) {
    expect_error(Error::unknown_type, [&](TraceWriter& writer) { writer.begin(type); });
  }
}

TEST(WriteMisuse, ARecordCanBeGivenUp) {
  TraceWriter writer(options_of(ByteOrder::little));
  write_exit(writer);
  writer.begin(Type::FUNCTION_CALL);
  writer.reference(0);
  writer.begin_array();
  writer.abandon();
  writer.abandon();
  EXPECT_FALSE(writer.is_in_record());
  write_exit(writer);
  EXPECT_EQ(writer.data_size(), 8U);
}

}  // namespace
}  // namespace CT::Test
