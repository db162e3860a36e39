// SPDX-License-Identifier: MIT
#include "ctreport/ct_packer.h"

#define ZLIB_CONST  // NOLINT(readability-identifier-naming): zlib then only reads its input
#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>

namespace CT::Report {

struct Packer::State {
  z_stream stream = {};
  std::array<unsigned char, std::size_t{16} * 1024> output;
};

Packer::Packer(int level) : state_(std::make_unique<State>()) {
  if (deflateInit(&state_->stream, level) != Z_OK) throw std::bad_alloc();
}

Packer::~Packer() { deflateEnd(&state_->stream); }

bool Packer::write(std::string_view bytes) {
  constexpr std::size_t most = std::size_t{1} << 30;  // zlib counts in 32 bits
  while (!bytes.empty()) {
    const std::string_view piece = bytes.substr(0, most);
    run(piece, Z_NO_FLUSH);
    bytes.remove_prefix(piece.size());
  }
  return true;
}

std::string Packer::finish() {
  run({}, Z_FINISH);
  deflateReset(&state_->stream);
  std::string whole(packed_);
  packed_.clear();
  return whole;
}

void Packer::run(std::string_view bytes, int flush) {
  z_stream& stream = state_->stream;
  stream.next_in = static_cast<const Bytef*>(static_cast<const void*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  do {
    stream.next_out = state_->output.data();
    stream.avail_out = static_cast<uInt>(state_->output.size());
    deflate(&stream, flush);
    const auto* const made =
        static_cast<const char*>(static_cast<const void*>(state_->output.data()));
    packed_.append(made, state_->output.size() - stream.avail_out);
  } while (stream.avail_out == 0);
}

std::string packed(const std::function<void(Writer&)>& put) {
  Packer packer;
  StreamWriter out(packer);
  put(out);
  out.flush();
  return packer.finish();
}

}  // namespace CT::Report
