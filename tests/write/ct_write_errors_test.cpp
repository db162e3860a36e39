// SPDX-License-Identifier: MIT
//
// Each error that a caller has to live with.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "expect_error.h"
#include "trace_builder.h"
#include "written_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Type;
using Write::Error;
using Write::Limits;
using Write::TraceWriter;

constexpr std::size_t largest_payload = 16'777'215;

TEST(WriteErrors, EachHasWords) {
  std::vector<std::string_view> seen;
  for (int code = 0; code <= static_cast<int>(Error::no_checkpoint); ++code) {
    const std::string_view words = Write::describe(static_cast<Error>(code));
    EXPECT_EQ(std::count(seen.begin(), seen.end(), words), 0) << words;
    EXPECT_NE(words, "unknown error");
    seen.push_back(words);
  }
}

TEST(WriteErrors, APayloadMayBeAsLargeAsItsSizeCanTell) {
  const std::string body(largest_payload - 4, 'x');
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    TraceWriter writer(options_of(order));
    writer.begin(Type::SAPI_WRITE_START);
    writer.cut_text(body);
    ASSERT_TRUE(writer.end());
    TraceBuilder expected(order);
    expected.add(CheckpointDraft::sapi_write_start(Fields().cut_string(body)));
    EXPECT_TRUE(finished(writer) == expected.build());
  }
}

TEST(WriteErrors, APayloadIsTooLarge) {
  const std::string body(largest_payload - 3, 'x');
  expect_error(Error::payload_too_large, [&](TraceWriter& writer) {
    writer.begin(Type::SAPI_WRITE_START);
    writer.cut_text(body);
  });
  expect_error(Error::payload_too_large, [&](TraceWriter& writer) {
    writer.begin(Type::FUNCTION_RETURN);
    writer.reference(0);
    writer.begin_array();
    for (std::size_t i = 0; i != largest_payload; ++i) writer.integer(1);
    writer.end_array();
  });
  expect_error(Error::payload_too_large, [&](TraceWriter& writer) {
    writer.begin(Type::SAPI_FLUSH);
    writer.raw(as_bytes(body));
    writer.raw(as_bytes("1234"));
  });
}

TEST(WriteErrors, ASectionIsTooLarge) {
  const Limits limits = {.section_bytes = 20};
  expect_error(
      Error::section_too_large,
      [](TraceWriter& writer) {
        writer.begin(Type::SAPI_WRITE_START);
        writer.cut_text("123456789");  // 4 + 4 + 9 bytes behind the 4 of an exit
      },
      limits);
  expect_error(
      Error::section_too_large,
      [](TraceWriter& writer) {
        writer.begin(Type::INCLUDE_CALL);
        writer.reference(writer.text("a name of more bytes"));
      },
      limits);
  TraceWriter full(options_of(ByteOrder::little, limits));
  for (int i = 0; i != 5; ++i) write_exit(full);
  full.begin(Type::SCRIPT_EXIT);
  EXPECT_FALSE(full.end());
  EXPECT_EQ(full.error(), Error::section_too_large);
  EXPECT_FALSE(full.text("no room until the end of a record"));
  EXPECT_EQ(full.text(""), 0U);
  EXPECT_EQ(full.error(), Error::section_too_large);
}

TEST(WriteErrors, CopiesAreWholeCheckpoints) {
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    TraceBuilder builder(order);
    builder.add(CheckpointDraft::raw(27, Fields().u32(1).u8(2)));
    builder.add(CheckpointDraft::script_exit());
    const std::string checkpoint = CheckpointDraft::raw(27, Fields().u32(1).u8(2)).encode(order);
    TraceWriter writer(options_of(order));
    EXPECT_EQ(writer.copy(as_bytes(checkpoint)), TraceBuilder::default_orig_data);
    for (std::size_t size = 0; size != checkpoint.size(); ++size) {
      EXPECT_FALSE(writer.copy(as_bytes(std::string_view(checkpoint).substr(0, size))));
      EXPECT_EQ(writer.error(), Error::no_checkpoint);
    }
    EXPECT_FALSE(writer.copy(as_bytes(checkpoint + "x")));
    EXPECT_TRUE(writer.copy(as_bytes(CheckpointDraft::script_exit().encode(order))));
    EXPECT_EQ(finished(writer), builder.build());
  }
}

TEST(WriteErrors, ADestinationIsFull) {
  TraceWriter writer(options_of(ByteOrder::little));
  writer.text("name");
  write_exit(writer);
  for (std::size_t most = 0; most != writer.file_size(); ++most) {
    StringDestination destination(most);
    EXPECT_FALSE(writer.finish(destination));
    EXPECT_EQ(writer.error(), Error::lost);
    EXPECT_EQ(writer.system_error(), ENOSPC);
  }
  std::vector<unsigned char> room(writer.file_size());
  Write::MemoryDestination small({room.data(), room.size() - 1});
  EXPECT_FALSE(writer.finish(small));
  Write::MemoryDestination memory(room);
  EXPECT_TRUE(writer.finish(memory));
  EXPECT_EQ(std::string(room.begin(), room.end()), finished(writer));
}

}  // namespace
}  // namespace CT::Test
