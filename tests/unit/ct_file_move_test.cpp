// SPDX-License-Identifier: MIT
//
// A file that is handed on, and the ways to hand it bytes.
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <type_traits>
#include <utility>

#include "codetrace/ct_file.h"
#include "codetrace/model/ct_view.h"
#include "file_lines.h"
#include "open_trace.h"
#include "trace_builder.h"

namespace CT::Test {
namespace {

static_assert(std::is_nothrow_move_constructible_v<File>);
static_assert(std::is_nothrow_move_assignable_v<File>);
static_assert(!std::is_copy_constructible_v<File>);

std::string some_trace() {
  TraceBuilder trace(ByteOrder::big, 0x1000, 0x2000);
  trace.set_request_id(7);
  trace.data(Fields().raw("abc"));
  trace.add_data(Fields().raw("de"));
  return trace.build();
}

File opened(const std::string& bytes) {
  File file(QStringLiteral("name"));
  EXPECT_TRUE(file.open(as_bytes(bytes), bytes.size()));
  return file;
}

void expect_closed(const File& file) {
  EXPECT_FALSE(file.is_open());
  EXPECT_EQ(file.data().data(), nullptr);
  EXPECT_EQ(file.data().size(), 0U);
  EXPECT_EQ(file.add_data().data(), nullptr);
  EXPECT_EQ(file.add_data().size(), 0U);
  EXPECT_EQ(file.header().request_id, 0U);
  EXPECT_FALSE(file.big_endian());
  EXPECT_TRUE(file.error_message().isEmpty());
  CheckpointView view(file);
  EXPECT_FALSE(view.step());
}

void expect_some_trace(const File& file) {
  EXPECT_TRUE(file.is_open());
  EXPECT_EQ(std::string(Section::as_chars(file.data().data()), 5), "abcde");
  EXPECT_EQ(file.add_data().size(), 2U);
  EXPECT_EQ(file.header().request_id, 7U);
  EXPECT_TRUE(file.big_endian());
  EXPECT_EQ(file.name(), QStringLiteral("name"));
}

// What is asked of files that were moved from is what these tests are about.
TEST(FileMove, ConstructingTakesTheBytesAndClosesTheOther) {
  File from = opened(some_trace());
  const unsigned char* const bytes = from.data().data();
  const File to(std::move(from));
  expect_some_trace(to);
  EXPECT_EQ(to.data().data(), bytes) << "the bytes stay where they are";
  expect_closed(from);
}

TEST(FileMove, AssigningTakesTheBytesAndClosesTheOther) {
  File from = opened(some_trace());
  File to = opened(TraceBuilder().build());
  to = std::move(from);
  expect_some_trace(to);
  expect_closed(from);
}

TEST(FileMove, AssigningToItselfChangesNothing) {
  File file = opened(some_trace());
  File& same = file;
  file = std::move(same);
  expect_some_trace(file);
}

TEST(FileMove, AClosedOneCanBeOpenedAgain) {
  File from = opened(some_trace());
  const File to(std::move(from));
  const std::string bytes = some_trace();
  EXPECT_TRUE(from.open(as_bytes(bytes), bytes.size()));
  expect_some_trace(from);
  expect_some_trace(to);
}

TEST(FileMove, TheErrorAndTheLogGoAlong) {
  FileLines told;
  File from(QStringLiteral("name"));
  from.set_log(told.log());
  EXPECT_FALSE(from.open(as_bytes("x"), 1));
  const std::size_t lines = told.lines().size();
  File to(std::move(from));
  EXPECT_FALSE(to.error_message().isEmpty());
  EXPECT_FALSE(from.open(as_bytes("x"), 1));
  EXPECT_EQ(told.lines().size(), lines);
  EXPECT_FALSE(to.open(as_bytes("x"), 1));
  EXPECT_GT(told.lines().size(), lines);
}

TEST(FileFromMemory, ASpanOfBytesIsCopied) {
  std::string bytes = some_trace();
  File file(QStringLiteral("name"));
  ASSERT_TRUE(file.open(std::as_bytes(std::span(bytes))));
  bytes.assign(bytes.size(), 'x');
  expect_some_trace(file);
}

TEST(FileFromMemory, AnEmptySpanIsRefused) {
  File file(QStringLiteral("name"));
  EXPECT_FALSE(file.open(std::span<const std::byte>()));
  EXPECT_EQ(file.error_message().toStdString(),
            "Expect at least the size of Code Trace file header (36 bytes), but got 0 bytes");
}

}  // namespace
}  // namespace CT::Test
