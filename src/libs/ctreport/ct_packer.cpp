// SPDX-License-Identifier: MIT
#include "ctreport/ct_packer.h"

#define ZLIB_CONST  // NOLINT(readability-identifier-naming): zlib then only reads its input
#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>

namespace CT::Report {

namespace {

// Of zlib's levels. Higher ones than the usual one take much longer and gain little.
constexpr int usual_level = 6;
constexpr int fast_level = 1;

}  // namespace

struct Packer::State {
  z_stream stream = {};
  std::array<unsigned char, std::size_t{16} * 1024> output;
};

Packer::Packer(Effort effort) : state_(std::make_unique<State>()) {
  const int level = effort == Effort::usual ? usual_level : fast_level;
  if (deflateInit(&state_->stream, level) != Z_OK) throw std::bad_alloc();
}

Packer::~Packer() { deflateEnd(&state_->stream); }

// Calls `step`, which says whether it is to be called again, until all is out.
template <class Step>
void Packer::run(std::string_view bytes, Step step) {
  z_stream& stream = state_->stream;
  stream.next_in = static_cast<const Bytef*>(static_cast<const void*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  int result = Z_OK;
  do {
    stream.next_out = state_->output.data();
    stream.avail_out = static_cast<uInt>(state_->output.size());
    result = step(&stream);
    const auto* const made =
        static_cast<const char*>(static_cast<const void*>(state_->output.data()));
    packed_.append(made, state_->output.size() - stream.avail_out);
  } while (stream.avail_out == 0 && result != Z_STREAM_END);
}

bool Packer::write(std::string_view bytes) {
  constexpr std::size_t most = std::size_t{1} << 30;  // zlib counts in 32 bits
  while (!bytes.empty()) {
    const std::string_view piece = bytes.substr(0, most);
    run(piece, [](z_stream* stream) { return deflate(stream, Z_NO_FLUSH); });
    bytes.remove_prefix(piece.size());
  }
  return true;
}

std::string Packer::finish() {
  run({}, [](z_stream* stream) { return deflate(stream, Z_FINISH); });
  deflateReset(&state_->stream);
  std::string whole(packed_);
  packed_.clear();
  return whole;
}

void Packer::hurry() {
  const bool is_noise = packed_.size() > state_->stream.total_in / 8 * 5;
  const int strategy = is_noise ? Z_RLE : Z_DEFAULT_STRATEGY;
  run({}, [&](z_stream* stream) { return deflateParams(stream, fast_level, strategy); });
}

std::string packed(const std::function<void(Writer&)>& put) {
  Packer packer;
  StreamWriter out(packer);
  put(out);
  out.flush();
  return packer.finish();
}

}  // namespace CT::Report
