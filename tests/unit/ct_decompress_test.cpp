// SPDX-License-Identifier: MIT
//
// Archives in pieces of any size, whole, one behind the other, cut at every byte, too large, and
// with something behind them.
#include "tools/cttool/ct_decompress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <lzma.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace CT::Test {
namespace {

using Tool::Archive;
using Tool::Decompressor;

std::string gzip(std::string_view plain) {
  z_stream stream = {};
  constexpr int with_gzip_header = 15 + 16;
  EXPECT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, with_gzip_header, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string packed(deflateBound(&stream, plain.size()) + 32, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
  stream.avail_in = static_cast<uInt>(plain.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

std::string xz(std::string_view plain) {
  std::string packed(lzma_stream_buffer_bound(plain.size()), '\0');
  std::size_t size = 0;
  EXPECT_EQ(lzma_easy_buffer_encode(
                1, LZMA_CHECK_CRC64, nullptr, reinterpret_cast<const std::uint8_t*>(plain.data()),
                plain.size(), reinterpret_cast<std::uint8_t*>(packed.data()), &size, packed.size()),
            LZMA_OK);
  packed.resize(size);
  return packed;
}

std::string zstd(std::string_view plain) {
  std::string packed(ZSTD_compressBound(plain.size()), '\0');
  packed.resize(ZSTD_compress(packed.data(), packed.size(), plain.data(), plain.size(), 3));
  return packed;
}

std::string packed(Archive kind, std::string_view plain) {
  switch (kind) {
    case Archive::none: break;
    case Archive::gzip: return gzip(plain);
    case Archive::xz: return xz(plain);
    case Archive::zstd: return zstd(plain);
  }
  return {};
}

// What comes out, and why it ended.
struct Unpacked {
  std::string bytes;
  std::string error;
  bool is_too_large = false;
};

// Pieces of `read_size` go in and pieces of `room` come out.
Unpacked unpacked(Archive kind, const std::string& archive, std::size_t read_size = 7,
                  std::size_t room = 5, std::uint64_t limit = 1 << 20) {
  std::size_t at = 0;
  const auto stream = Decompressor::make(
      kind,
      [&](unsigned char* to, std::size_t size) {
        const std::size_t piece = std::min({size, read_size, archive.size() - at});
        std::memcpy(to, archive.data() + at, piece);
        at += piece;
        return static_cast<std::int64_t>(piece);
      },
      limit);
  Unpacked all;
  std::string piece(room, '\0');
  std::int64_t got = 0;
  while ((got = stream->read(reinterpret_cast<unsigned char*>(piece.data()), room)) > 0) {
    all.bytes.append(piece, 0, static_cast<std::size_t>(got));
  }
  all.error = stream->error();
  all.is_too_large = stream->is_too_large();
  return all;
}

std::string plain_text() {
  std::string text(300, 'x');
  return text.append(" a trace, a trace, one more trace");
}

class Decompress : public testing::TestWithParam<Archive> {
 protected:
  const std::string plain_ = plain_text();
  const std::string archive_ = packed(GetParam(), plain_);
};

TEST_P(Decompress, ItsMarkTellsTheKind) {
  EXPECT_EQ(Tool::archive_of(archive_), GetParam());
  EXPECT_EQ(Tool::archive_of(plain_), Archive::none);
  EXPECT_EQ(Tool::archive_of(""), Archive::none);
}

TEST_P(Decompress, PiecesOfAnySizeAreTheSame) {
  for (const std::size_t read_size : {1U, 2U, 1000U}) {
    for (const std::size_t room : {1U, 13U, 1000U}) {
      const Unpacked all = unpacked(GetParam(), archive_, read_size, room);
      EXPECT_EQ(all.bytes, plain_);
      EXPECT_EQ(all.error, "");
    }
  }
}

TEST_P(Decompress, NothingCanBePacked) {
  const Unpacked all = unpacked(GetParam(), packed(GetParam(), ""));
  EXPECT_EQ(all.bytes + all.error, "");
}

TEST_P(Decompress, OneBehindTheOtherIsOne) {
  const Unpacked all = unpacked(GetParam(), archive_ + archive_);
  EXPECT_EQ(all.bytes, plain_ + plain_);
  EXPECT_EQ(all.error, "");
}

TEST_P(Decompress, CutAnywhereItIsABeginningAndSaysSo) {
  for (std::size_t size = 0; size != archive_.size(); ++size) {
    const Unpacked all = unpacked(GetParam(), archive_.substr(0, size));
    EXPECT_TRUE(plain_.starts_with(all.bytes)) << size;
    // Nothing at all may be no archive, and so no damaged one.
    if (size == 0) continue;
    EXPECT_THAT(all.error, testing::HasSubstr("too early")) << size;
  }
}

TEST_P(Decompress, WhateverStandsBehindItIsDamage) {
  const Unpacked all = unpacked(GetParam(), archive_ + "and more of it");
  EXPECT_EQ(all.bytes, plain_);
  EXPECT_NE(all.error, "");
}

TEST_P(Decompress, EndsAtItsLimit) {
  const Unpacked fits = unpacked(GetParam(), archive_, 7, 5, plain_.size());
  EXPECT_EQ(fits.bytes, plain_);
  EXPECT_FALSE(fits.is_too_large);
  const Unpacked not_so = unpacked(GetParam(), archive_, 7, 5, plain_.size() - 1);
  EXPECT_LT(not_so.bytes.size(), plain_.size());
  EXPECT_TRUE(not_so.is_too_large);
}

std::string name_of(const testing::TestParamInfo<Archive>& kind) {
  constexpr std::array names = {"None", "Gzip", "Xz", "Zstd"};
  return names.at(static_cast<std::size_t>(kind.param));
}

INSTANTIATE_TEST_SUITE_P(OfAllKinds, Decompress,
                         testing::Values(Archive::gzip, Archive::xz, Archive::zstd), name_of);

}  // namespace
}  // namespace CT::Test
