// SPDX-License-Identifier: MIT
#include "codetrace/ct_file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "file_lines.h"
#include "open_trace.h"
#include "temp_file.h"
#include "trace_builder.h"

namespace CT::Test {
namespace {

enum class Way { memory, disk, pipe, pipe_byte_by_byte };

// Opens the same bytes in each way that a trace can come.
class FileOpen : public ::testing::TestWithParam<Way> {
 protected:
  bool open(const std::string& bytes) {
    const QString path = folder_.path(QStringLiteral("trace"));
    file_.emplace(path);
    told_.clear();
    file_->set_log(told_.log());
    switch (GetParam()) {
      case Way::memory: return file_->open(as_bytes(bytes), bytes.size());
      case Way::disk: folder_.file(QStringLiteral("trace"), bytes); return file_->open();
      case Way::pipe: return open_pipe(path, bytes, 1000);
      case Way::pipe_byte_by_byte: return open_pipe(path, bytes, 1);
    }
    return false;
  }
  bool open_pipe(const QString& path, const std::string& bytes, std::size_t piece) {
    const PipeWriter writer(path, bytes, piece);
    return file_->open();
  }
  std::string error_of(const std::string& bytes) {
    EXPECT_FALSE(open(bytes));
    EXPECT_FALSE(file_->is_open());
    EXPECT_EQ(file_->data().data(), nullptr);
    EXPECT_EQ(file_->add_data().data(), nullptr);
    return file_->error_message().toStdString();
  }

  TempFolder folder_;
  FileLines told_;
  std::optional<File> file_;
};

std::string name_of(const ::testing::TestParamInfo<Way>& test) {
  constexpr const char* names[] = {"Memory", "Disk", "Pipe", "PipeByteByByte"};
  return names[static_cast<std::size_t>(test.param)];
}

INSTANTIATE_TEST_SUITE_P(AllWays, FileOpen,
                         ::testing::Values(Way::memory, Way::disk, Way::pipe,
                                           Way::pipe_byte_by_byte),
                         name_of);

TEST_P(FileOpen, AHeaderAloneIsAWholeTrace) {
  ASSERT_TRUE(open(TraceBuilder().build()));
  EXPECT_TRUE(file_->is_open());
  EXPECT_EQ(file_->error_message(), QString());
  EXPECT_EQ(file_->data().data(), nullptr);
  EXPECT_EQ(file_->add_data().data(), nullptr);
  EXPECT_EQ(file_->data().size(), 0U);
}

TEST_P(FileOpen, HeaderFieldsAreBigEndianInBothByteOrders) {
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    TraceBuilder trace(order, 0x1122334455667788, 0x99AABBCCDDEEFF00);
    trace.set_request_id(0x01020304);
    trace.set_php_api(20230831);
    trace.data(Fields().raw("abc"));
    trace.add_data(Fields().raw("de"));
    ASSERT_TRUE(open(trace.build()));
    const FileHeader& header = file_->header();
    EXPECT_EQ(header.version, 1);
    EXPECT_EQ(header.request_id, 0x01020304U);
    EXPECT_EQ(header.php_api_version, 20230831U);
    EXPECT_EQ(header.data_size, 3U);
    EXPECT_EQ(header.add_data_size, 2U);
    EXPECT_EQ(header.orig_data, 0x1122334455667788U);
    EXPECT_EQ(header.orig_add_data, 0x99AABBCCDDEEFF00U);
    EXPECT_EQ(file_->big_endian(), order == ByteOrder::big);
  }
}

TEST_P(FileOpen, OnlyOneFlagTellsTheByteOrder) {
  for (const std::uint8_t flags : std::initializer_list<std::uint8_t>{0x00, 0x02, 0xFD, 0xFF}) {
    TraceBuilder trace;
    trace.set_flags(flags);
    ASSERT_TRUE(open(trace.build()));
    EXPECT_EQ(file_->header().flags, flags);
    EXPECT_EQ(file_->big_endian(), (flags & 2) != 0);
  }
}

TEST_P(FileOpen, SectionsFollowTheHeaderAndEachOther) {
  TraceBuilder trace(ByteOrder::little, 0x1000, 0x2000);
  trace.data(Fields().raw("abc"));
  trace.add_data(Fields().raw("de"));
  ASSERT_TRUE(open(trace.build()));
  EXPECT_EQ(std::string(Section::as_chars(file_->data().data()), 5), "abcde");
  EXPECT_EQ(file_->add_data().data(), file_->data().end());
  EXPECT_EQ(file_->add_data().size(), 2U);
  EXPECT_EQ(file_->data().origin(), 0x1000U);
  EXPECT_EQ(file_->add_data().origin(), 0x2000U);
}

TEST_P(FileOpen, AnEmptySectionIsNullBesideOneThatIsNot) {
  TraceBuilder only_add_data;
  only_add_data.text("x");
  ASSERT_TRUE(open(only_add_data.build()));
  EXPECT_EQ(file_->data().data(), nullptr);
  EXPECT_EQ(file_->add_data().size(), 2U);
  TraceBuilder only_data;
  only_data.data(Fields().raw("x"));
  ASSERT_TRUE(open(only_data.build()));
  EXPECT_EQ(file_->add_data().data(), nullptr);
  EXPECT_EQ(file_->data().size(), 1U);
}

TEST_P(FileOpen, SectionsOfMegabytesAreReadWhole) {
  std::string large(3'000'000, '\0');
  for (std::size_t i = 0; i != large.size(); ++i) large[i] = static_cast<char>(i % 251);
  if (GetParam() == Way::pipe_byte_by_byte) large.resize(70'000);
  TraceBuilder trace;
  trace.data(Fields().raw(large));
  trace.text("end");
  ASSERT_TRUE(open(trace.build()));
  EXPECT_EQ(std::string_view(Section::as_chars(file_->data().data()), large.size()), large);
  EXPECT_EQ(file_->add_data().text(file_->add_data().data()), "end");
}

TEST_P(FileOpen, LessThanAHeaderIsRefused) {
  const std::string header = TraceBuilder().build();
  const std::string head =
      "Expect at least the size of Code Trace file header (36 bytes), but got ";
  EXPECT_EQ(error_of(header.substr(0, 35)), head + "35 bytes");
  EXPECT_EQ(error_of(""), head + "0 bytes");
  EXPECT_EQ(error_of("XY"), head + "2 bytes");
}

TEST_P(FileOpen, AnotherMagicIsRefused) {
  for (const char* magic : {"XT", "CX", "ct", "TC"}) {
    TraceBuilder trace;
    trace.set_magic(magic);
    EXPECT_EQ(error_of(trace.build()), "Invalid Code Trace dump file magic");
  }
}

TEST_P(FileOpen, AnotherVersionIsRefused) {
  for (const std::uint8_t version : std::initializer_list<std::uint8_t>{0, 2, 255}) {
    TraceBuilder trace;
    trace.set_version(version);
    EXPECT_EQ(error_of(trace.build()),
              "Unsupported Code Trace dump file version " + std::to_string(version));
  }
}

TEST_P(FileOpen, ASurplusIsRefusedWithBothSizes) {
  TraceBuilder trace;
  trace.data(Fields().raw("x"));
  trace.append_to_file("y");
  EXPECT_EQ(error_of(trace.build()), "Expected 37 bytes, but got 38 bytes");
  trace.append_to_file(std::string(10'000, 'y'));
  EXPECT_EQ(error_of(trace.build()), "Expected 37 bytes, but got 10038 bytes");
  EXPECT_EQ(error_of(TraceBuilder().build() + "y"), "Expected 36 bytes, but got 37 bytes");
}

TEST_P(FileOpen, MissingBytesAreRefusedWithBothSizes) {
  TraceBuilder trace;
  trace.data(Fields().raw("abcd"));
  trace.text("ef");
  trace.cut_file(1);
  EXPECT_EQ(error_of(trace.build()), "Expected 43 bytes, but got 42 bytes");
  trace.cut_file(7);
  EXPECT_EQ(error_of(trace.build()), "Expected 43 bytes, but got 36 bytes");
}

TEST_P(FileOpen, TheExpectedSizeDoesNotWrap) {
  TraceBuilder trace;
  trace.set_data_size(0xFFFFFFFF);
  trace.set_add_data_size(0xFFFFFFFF);
  EXPECT_EQ(error_of(trace.build()), "Expected 8589934626 bytes, but got 36 bytes");
  trace.set_data_size(0xFFFFFFFF);
  trace.set_add_data_size(1);
  EXPECT_EQ(error_of(trace.build()), "Expected 4294967332 bytes, but got 36 bytes");
}

TEST_P(FileOpen, TheFirstCheckThatFailsDecides) {
  TraceBuilder trace;
  trace.set_magic("XY");
  trace.set_version(9);
  trace.append_to_file("y");
  EXPECT_EQ(error_of(trace.build().substr(0, 20)),
            "Expect at least the size of Code Trace file header (36 bytes), but got 20 bytes");
  EXPECT_EQ(error_of(trace.build()), "Invalid Code Trace dump file magic");
  trace.set_magic("CT");
  EXPECT_EQ(error_of(trace.build()), "Unsupported Code Trace dump file version 9");
  trace.set_version(1);
  EXPECT_EQ(error_of(trace.build()), "Expected 36 bytes, but got 37 bytes");
}

TEST_P(FileOpen, AHeaderIsKnownThoughItIsRefused) {
  TraceBuilder trace;
  trace.set_version(7);
  trace.set_request_id(42);
  error_of(trace.build());
  EXPECT_EQ(file_->header().version, 7);
  EXPECT_EQ(file_->header().request_id, 42U);
}

TEST_P(FileOpen, IsLoggedStepByStep) {
  const std::string name = folder_.path(QStringLiteral("trace")).toStdString();
  TraceBuilder trace(ByteOrder::big, 0xABC, 0xDEF0);
  trace.set_request_id(7);
  trace.set_php_api(20230831);
  trace.data(Fields().raw("x"));
  std::vector<std::string> expected = {
      "4 Opening Code Trace file " + name, "4 Code Trace file " + name + " opened",
      "4 Read 37 bytes of data from the Code Trace file " + name,
      "5 Code Trace dump file header:\n\tVERSION: 1\n\tFLAGS: 0x02\n\tREQUEST ID: 7\n\t"
      "PHP API VERSION: 20230831\n\tDATA: 1 0xabc\n\tADD DATA: 0 0xdef0"};
  // Of bytes in memory no file is opened.
  if (GetParam() == Way::memory) expected.erase(expected.begin(), expected.begin() + 2);
  ASSERT_TRUE(open(trace.build()));
  EXPECT_EQ(told_.lines(), expected);
  for (const std::string& place : told_.places()) {
    EXPECT_EQ(place, "src/libs/codetrace/ct_file.cpp:N");
  }
}

TEST_P(FileOpen, AHeaderIsLoggedBeforeItIsJudged) {
  for (const char* magic : {"XY", "CT"}) {
    TraceBuilder trace;
    trace.set_magic(magic);
    trace.set_version(9);
    trace.set_flags(0xFA);
    error_of(trace.build());
    EXPECT_EQ(told_.lines().back(),
              "5 Code Trace dump file header:\n\tVERSION: 9\n\tFLAGS: 0xfa\n\tREQUEST ID: 0\n\t"
              "PHP API VERSION: 0\n\tDATA: 0 0x10000000\n\tADD DATA: 0 0x20000000");
  }
}

TEST_P(FileOpen, WithoutAHeaderNoneIsLogged) {
  error_of(std::string(35, 'C'));
  ASSERT_FALSE(told_.lines().empty());
  EXPECT_TRUE(told_.lines().back().starts_with("4 Read 35 bytes of data"));
}

TEST_P(FileOpen, ZerosFollowTheLastByte) {
  TraceBuilder trace;
  trace.data(Fields().raw("abc"));
  trace.add_data(Fields().raw("de"));
  ASSERT_TRUE(open(trace.build()));
  const std::string_view behind(Section::as_chars(file_->add_data().end()), File::padding);
  EXPECT_EQ(behind, std::string(File::padding, '\0'));
}

}  // namespace
}  // namespace CT::Test
