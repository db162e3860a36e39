// SPDX-License-Identifier: MIT
//
// The bytes of files that are no traces, and why some cannot be had.
#include "tools/cttool/ct_raw_input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <string>

#include "codetrace/ct_file.h"
#include "temp_file.h"

namespace CT::Test {
namespace {

using testing::HasSubstr;
using Tool::RawInput;

constexpr std::uint64_t max_size = 1 << 20;

std::string gzip(std::string_view plain) {
  std::string packed(compressBound(plain.size()) + 32, '\0');
  z_stream stream = {};
  constexpr int with_gzip_header = 15 + 16;
  EXPECT_EQ(deflateInit2(&stream, 1, Z_DEFLATED, with_gzip_header, 8, Z_DEFAULT_STRATEGY), Z_OK);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
  stream.avail_in = static_cast<uInt>(plain.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

// Reads a file of these bytes.
bool load(RawInput& input, std::string_view bytes) {
  const TempFolder folder;
  return input.load(folder.file(QStringLiteral("a"), bytes).toStdString());
}

std::string bytes_of(const RawInput& input) {
  return {Section::as_chars(input.bytes().data()), input.bytes().size()};
}

TEST(RawInput, HandsOutWhateverThereIsWithZerosBehind) {
  for (const std::size_t size : {0U, 1U, 35U, 36U, 5000U, 3000000U}) {
    const std::string plain(size, 'x');
    RawInput input(max_size);
    ASSERT_TRUE(load(input, plain)) << input.failure();
    EXPECT_EQ(bytes_of(input), plain);
    const std::string behind(Section::as_chars(input.bytes().data() + size), File::padding);
    EXPECT_EQ(behind, std::string(File::padding, '\0'));
    EXPECT_EQ(input.archive_damage(), "");
  }
}

TEST(RawInput, UnpacksArchivesAsFarAsTheyGo) {
  std::string plain;
  for (int number = 0; number != 20000; ++number) plain += std::to_string(number);
  const std::string packed = gzip(plain);
  RawInput input(max_size);
  ASSERT_TRUE(load(input, packed));
  EXPECT_EQ(bytes_of(input), plain);
  EXPECT_EQ(input.archive_damage(), "");
  ASSERT_TRUE(load(input, packed.substr(0, packed.size() / 2)));
  EXPECT_EQ(bytes_of(input), plain.substr(0, input.bytes().size()));
  EXPECT_GT(input.bytes().size(), plain.size() / 4);
  EXPECT_EQ(input.archive_damage(), "it ends too early");
  // Opened again it starts afresh.
  ASSERT_TRUE(load(input, packed));
  EXPECT_EQ(input.archive_damage(), "");
}

TEST(RawInput, SaysWhyThereIsNothing) {
  RawInput input(max_size);
  EXPECT_FALSE(input.load("/no/such/file"));
  EXPECT_EQ(input.failure(), "No such file or directory");
  EXPECT_FALSE(input.load("/"));
  EXPECT_EQ(input.failure(), "file to open is a directory");
  EXPECT_FALSE(load(input, gzip("all of it").substr(0, 9)));
  EXPECT_EQ(input.failure(), "the archive is damaged, it ends too early");
  EXPECT_TRUE(input.bytes().empty());
}

TEST(RawInput, ReadsNoMoreThanIsAllowed) {
  RawInput input(max_size);
  EXPECT_FALSE(input.load("/dev/zero"));
  EXPECT_EQ(input.failure(), "it is larger than 1.0 MiB; --max-size 8G allows more");
  EXPECT_TRUE(load(input, gzip(std::string(max_size, 'x')))) << input.failure();
  EXPECT_FALSE(load(input, gzip(std::string(max_size + 1, 'x'))));
  EXPECT_THAT(input.failure(), HasSubstr("what is in the archive is larger than 1.0 MiB"));
}

}  // namespace
}  // namespace CT::Test
