// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_gzip.h"

#define ZLIB_CONST  // NOLINT(readability-identifier-naming): zlib then only reads its input
#include <zlib.h>

#include <array>
#include <new>

namespace CT::Tool {

struct GzipSink::State {
  z_stream stream = {};
  std::array<unsigned char, std::size_t{64} * 1024> output;
};

GzipSink::GzipSink(Sink& to) : to_(to), state_(std::make_unique<State>()) {
  constexpr int window_and_gzip = 15 + 16;
  constexpr int usual_memory = 8;
  if (deflateInit2(&state_->stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, window_and_gzip,
                   usual_memory, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
}

GzipSink::~GzipSink() { deflateEnd(&state_->stream); }

bool GzipSink::write(std::string_view bytes) { return run(bytes, Z_NO_FLUSH); }

bool GzipSink::finish() { return run({}, Z_FINISH); }

// Writers hand on pieces of 64 KiB at most, which is less than zlib can count.
bool GzipSink::run(std::string_view bytes, int flush) {
  z_stream& stream = state_->stream;
  stream.next_in = static_cast<const Bytef*>(static_cast<const void*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  do {
    stream.next_out = state_->output.data();
    stream.avail_out = static_cast<uInt>(state_->output.size());
    deflate(&stream, flush);
    const std::size_t size = state_->output.size() - stream.avail_out;
    const auto* const made =
        static_cast<const char*>(static_cast<const void*>(state_->output.data()));
    if (size != 0 && !to_.write({made, size})) return false;
  } while (stream.avail_out == 0);
  return true;
}

}  // namespace CT::Tool
