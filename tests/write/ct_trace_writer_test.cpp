// SPDX-License-Identifier: MIT
//
// Whole traces: the same bytes as from the tests' own builder.
#include "ctwrite/ct_trace_writer.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "ctwrite/ct_encoding.h"
#include "trace_builder.h"
#include "written_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Type;
using Write::Error;
using Write::TraceWriter;

class BothOrders : public testing::TestWithParam<ByteOrder> {
 protected:
  TraceBuilder builder{GetParam()};
  TraceWriter writer{options_of(GetParam())};
};

TEST_P(BothOrders, AnEmptyTraceIsAHeader) {
  const std::string file = finished(writer);
  EXPECT_EQ(file.size(), 36U);
  EXPECT_EQ(file, builder.build());
}

TEST_P(BothOrders, TheHeaderHasWhatTheOptionsSay) {
  Write::Options options = options_of(GetParam());
  options.request_id = 0x01020304;
  options.php_api_version = 20220829;
  options.flags = 0xFF;
  options.orig_data = 0xFEDC'BA98'7654'3210;
  TraceWriter with_options(options);
  TraceBuilder expected(GetParam(), options.orig_data, options.orig_add_data);
  expected.set_request_id(0x01020304);
  expected.set_php_api(20220829);
  expected.set_flags(GetParam() == ByteOrder::big ? 0xFF : 0xFD);
  EXPECT_EQ(finished(with_options), expected.build());
}

TEST_P(BothOrders, HeaderWordsOfEveryKind) {
  const Write::Encoding encoding(GetParam() == ByteOrder::big);
  for (std::uint8_t type = 0; type != 32; ++type) {
    for (std::uint8_t flags = 0; flags != 8; ++flags) {
      for (const std::uint32_t size : {0U, 1U, 0x012345U, 0xABCDEFU, 0xFFFFFFU}) {
        unsigned char word[4];
        encoding.put_header(word, type, flags, size);
        EXPECT_EQ(std::string(std::begin(word), std::end(word)),
                  header_word(GetParam(), type, flags, size));
        EXPECT_EQ(encoding.payload_size(word), size);
      }
    }
  }
}

TEST_P(BothOrders, ReferencesAndCommonFieldsAreTheBuildersBytes) {
  const Ref url = builder.text("http://h/");
  const Ref file = builder.text("/h.php");
  builder.add(CheckpointDraft::startup(url, url, 0, 0).time(10, 20).memory(4096).location(file, 7));
  const Ref include = builder.add(CheckpointDraft::include_call(file).memory(1));
  builder.add(CheckpointDraft::include_return(include).location(file, 3).time(11));
  builder.add(CheckpointDraft::user_event(url, 5));
  builder.add(CheckpointDraft::sapi_flush());
  builder.add(CheckpointDraft::script_exit());
  builder.add(CheckpointDraft::shutdown().time(12));

  EXPECT_EQ(writer.text("http://h/"), url);
  EXPECT_EQ(writer.text("/h.php"), file);
  writer.begin(Type::STARTUP, {.timestamp = Write::Timestamp{10, 20},
                               .memory = 4096,
                               .location = Write::Location{file, 7}});
  for (const Write::Reference to : {writer.text("http://h/"), url, Ref{0}, Ref{0}}) {
    writer.reference(to);
  }
  ASSERT_TRUE(writer.end());
  writer.begin(Type::INCLUDE_CALL, {.memory = 1});
  writer.reference(file);
  ASSERT_EQ(writer.end(), include);
  writer.begin(Type::INCLUDE_RETURN,
               {.timestamp = Write::Timestamp{11, 0}, .location = Write::Location{file, 3}});
  writer.reference(include);
  ASSERT_TRUE(writer.end());
  writer.begin(Type::USER_EVENT);
  writer.reference(url);
  writer.u32(5);
  ASSERT_TRUE(writer.end());
  for (const Type type : {Type::SAPI_FLUSH, Type::SCRIPT_EXIT}) {
    writer.begin(type);
    ASSERT_TRUE(writer.end());
  }
  writer.begin(Type::SHUTDOWN, {.timestamp = Write::Timestamp{12, 0}});
  ASSERT_TRUE(writer.end());
  EXPECT_EQ(finished(writer), builder.build());
}

TEST_P(BothOrders, TextsInRecordsAreTheBuildersBytes) {
  builder.add(CheckpointDraft::sapi_send_headers(200, "HTTP/1.1 200 OK"));
  builder.add(CheckpointDraft::script_error(2, "Warning"));
  builder.add(CheckpointDraft::script_error(8, ""));
  builder.add(CheckpointDraft::sapi_header(0, Fields().cut_string("A: b")));
  builder.add(CheckpointDraft::sapi_header(2, Fields().cut_string("A: b", 9)));
  builder.add(CheckpointDraft::sapi_header(3));

  writer.begin(Type::SAPI_SEND_HEADERS);
  writer.u32(200);
  writer.inline_text("HTTP/1.1 200 OK");
  ASSERT_TRUE(writer.end());
  writer.begin(Type::SCRIPT_ERROR);
  writer.u32(2);
  writer.inline_text("Warning");
  ASSERT_TRUE(writer.end());
  writer.begin(Type::SCRIPT_ERROR);
  writer.u32(8);
  writer.inline_text("");
  ASSERT_TRUE(writer.end());
  writer.begin(Type::SAPI_HEADER);
  writer.header_line(0, "A: b");
  ASSERT_TRUE(writer.end());
  writer.begin(Type::SAPI_HEADER);
  writer.header_line(2, "A: b", 9);
  ASSERT_TRUE(writer.end());
  writer.begin(Type::SAPI_HEADER);
  writer.header_line(3, "not written");
  ASSERT_TRUE(writer.end());
  EXPECT_EQ(finished(writer), builder.build());
}

INSTANTIATE_TEST_SUITE_P(All, BothOrders, testing::Values(ByteOrder::little, ByteOrder::big),
                         [](const auto& order) {
                           return order.param == ByteOrder::big ? "big" : "little";
                         });

}  // namespace
}  // namespace CT::Test
