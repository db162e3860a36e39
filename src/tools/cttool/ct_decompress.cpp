// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_decompress.h"

#define ZLIB_CONST
#include <lzma.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace CT::Tool {

namespace {

using Bytes = Decompressor::Bytes;

void skip(Bytes& input, std::size_t count) {
  input.data += count;
  input.size -= count;
}

class Gzip final : public Decompressor {
 public:
  Gzip() {
    constexpr int largest_window = 15;
    constexpr int gzip_only = 16;
    if (inflateInit2(&stream_, largest_window + gzip_only) != Z_OK) throw std::bad_alloc();
  }
  ~Gzip() override { inflateEnd(&stream_); }
  Gzip(const Gzip&) = delete;
  Gzip& operator=(const Gzip&) = delete;

 private:
  std::size_t step(Bytes& input, unsigned char* to, std::size_t size) override {
    if (is_between_ && !begin_next(input)) return 0;
    stream_.next_in = input.data;
    stream_.avail_in = static_cast<uInt>(input.size);
    stream_.next_out = to;
    stream_.avail_out = static_cast<uInt>(std::min<std::size_t>(size, largest_room));
    const uInt room = stream_.avail_out;
    const int result = inflate(&stream_, Z_NO_FLUSH);
    skip(input, input.size - stream_.avail_in);
    const std::size_t made = room - stream_.avail_out;
    switch (result) {
      case Z_OK: break;
      case Z_STREAM_END: is_between_ = true; break;
      case Z_BUF_ERROR:
        if (input.is_last) fail_short();
        break;
      case Z_MEM_ERROR: throw std::bad_alloc();
      default: fail(stream_.msg != nullptr ? stream_.msg : "it is no gzip"); break;
    }
    return made;
  }

  // Behind a member: the next one, or the end. Zeros there are padding.
  bool begin_next(Bytes& input) {
    constexpr unsigned char first_byte = 0x1F;
    while (input.size != 0 && *input.data == 0) skip(input, 1);
    if (input.size == 0) {
      if (input.is_last) end();
      return false;
    }
    if (*input.data != first_byte) {
      fail("something else follows it");
      return false;
    }
    inflateReset(&stream_);
    is_between_ = false;
    return true;
  }

  static constexpr std::size_t largest_room = std::size_t{1} << 30;
  z_stream stream_ = {};
  bool is_between_ = false;
};

class Xz final : public Decompressor {
 public:
  Xz() {
    if (lzma_stream_decoder(&stream_, most_memory, LZMA_CONCATENATED) != LZMA_OK) {
      throw std::bad_alloc();
    }
  }
  ~Xz() override { lzma_end(&stream_); }
  Xz(const Xz&) = delete;
  Xz& operator=(const Xz&) = delete;

 private:
  std::size_t step(Bytes& input, unsigned char* to, std::size_t size) override {
    stream_.next_in = input.data;
    stream_.avail_in = input.size;
    stream_.next_out = to;
    stream_.avail_out = size;
    const lzma_ret result = lzma_code(&stream_, input.is_last ? LZMA_FINISH : LZMA_RUN);
    skip(input, input.size - stream_.avail_in);
    const std::size_t made = size - stream_.avail_out;
    switch (result) {
      case LZMA_OK: break;
      case LZMA_STREAM_END: end(); break;
      case LZMA_BUF_ERROR:
        if (input.is_last) fail_short();
        break;
      case LZMA_MEM_ERROR: throw std::bad_alloc();
      case LZMA_MEMLIMIT_ERROR: fail("to take it apart needs more than 256 MiB of memory"); break;
      case LZMA_OPTIONS_ERROR: fail("it is made in a way that is not known here"); break;
      case LZMA_FORMAT_ERROR: fail("something else follows it"); break;
      default: fail("its content is damaged"); break;
    }
    return made;
  }

  static constexpr std::uint64_t most_memory = std::uint64_t{256} << 20;
  lzma_stream stream_ = LZMA_STREAM_INIT;
};

class Zstd final : public Decompressor {
 public:
  Zstd() : stream_(ZSTD_createDStream()) {
    if (stream_ == nullptr) throw std::bad_alloc();
  }
  ~Zstd() override { ZSTD_freeDStream(stream_); }
  Zstd(const Zstd&) = delete;
  Zstd& operator=(const Zstd&) = delete;

 private:
  std::size_t step(Bytes& input, unsigned char* to, std::size_t size) override {
    if (is_between_ && input.size == 0) {
      if (input.is_last) end();
      return 0;
    }
    ZSTD_inBuffer in = {input.data, input.size, 0};
    ZSTD_outBuffer out = {to, size, 0};
    const std::size_t result = ZSTD_decompressStream(stream_, &out, &in);
    skip(input, in.pos);
    if (ZSTD_isError(result) != 0) {
      fail(ZSTD_getErrorName(result));
    } else {
      is_between_ = result == 0;
      if (!is_between_ && out.pos == 0 && input.size == 0 && input.is_last) fail_short();
    }
    return out.pos;
  }

  ZSTD_DStream* stream_;
  bool is_between_ = false;  // behind a frame
};

}  // namespace

Archive archive_of(std::string_view first_bytes) {
  using namespace std::string_view_literals;
  if (first_bytes.starts_with("\x1F\x8B"sv)) return Archive::gzip;
  if (first_bytes.starts_with("\xFD\x37\x7A\x58\x5A\x00"sv)) return Archive::xz;
  if (first_bytes.starts_with("\x28\xB5\x2F\xFD"sv)) return Archive::zstd;
  return Archive::none;
}

std::unique_ptr<Decompressor> Decompressor::make(Archive kind, Read compressed,
                                                 std::uint64_t limit) {
  std::unique_ptr<Decompressor> made;
  switch (kind) {
    case Archive::none: return nullptr;
    case Archive::gzip: made = std::make_unique<Gzip>(); break;
    case Archive::xz: made = std::make_unique<Xz>(); break;
    case Archive::zstd: made = std::make_unique<Zstd>(); break;
  }
  made->compressed_ = std::move(compressed);
  made->limit_ = limit;
  return made;
}

void Decompressor::fail(std::string what) {
  error_ = std::move(what);
  has_ended_ = true;
}

bool Decompressor::fill() {
  const std::int64_t got = compressed_(buffer_.data(), buffer_.size());
  if (got < 0) fail("it cannot be read");
  input_ = {buffer_.data(), static_cast<std::size_t>(std::max<std::int64_t>(got, 0)), got <= 0};
  return got >= 0;
}

std::int64_t Decompressor::read(unsigned char* to, std::size_t size) {
  if (is_too_large_) return -1;
  std::size_t made = 0;
  while (!has_ended_ && made == 0 && size != 0) {
    if (input_.size == 0 && !input_.is_last && !fill()) return -1;
    made = step(input_, to, size);
  }
  total_ += made;
  is_too_large_ = total_ > limit_;
  return is_too_large_ ? -1 : static_cast<std::int64_t>(made);
}

}  // namespace CT::Tool
