// SPDX-License-Identifier: MIT
#include "ctreport/ct_packer.h"

#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <array>
#include <cstdint>
#include <new>
#include <utility>

namespace CT::Report {

namespace {

const char* as_chars(const unsigned char* bytes) {
  return static_cast<const char*>(static_cast<const void*>(bytes));
}

const unsigned char* as_bytes(std::string_view text) {
  return static_cast<const unsigned char*>(static_cast<const void*>(text.data()));
}

std::string pack_well(std::string_view bytes) {
  constexpr int level = 6;  // higher ones take much longer and gain little
  uLong size = compressBound(static_cast<uLong>(bytes.size()));
  const std::unique_ptr<unsigned char[]> room(new unsigned char[size]);
  if (compress2(room.get(), &size, as_bytes(bytes), static_cast<uLong>(bytes.size()), level) !=
      Z_OK) {
    throw std::bad_alloc();
  }
  return {as_chars(room.get()), size};
}

}  // namespace

class Packer::Quick {
 public:
  Quick() { begin(); }

  void write(std::string_view bytes) {
    constexpr std::size_t most = std::size_t{1} << 30;  // it counts in 32 bits
    while (!bytes.empty()) {
      const std::string_view piece = bytes.substr(0, most);
      run(piece);
      bytes.remove_prefix(piece.size());
    }
  }

  std::string finish() {
    stream_.end_of_stream = 1;
    run({});
    begin();
    std::string whole(packed_);
    packed_.clear();
    return whole;
  }

 private:
  static constexpr unsigned level = 2;

  void begin() {
    isal_deflate_init(&stream_);
    stream_.level = level;
    stream_.level_buf = level_room_.data();
    stream_.level_buf_size = static_cast<std::uint32_t>(level_room_.size());
    stream_.gzip_flag = IGZIP_ZLIB;
    stream_.flush = NO_FLUSH;
  }

  // Packs until all is out that comes out.
  void run(std::string_view bytes) {
    stream_.next_in = const_cast<unsigned char*>(as_bytes(bytes));  // which it only reads
    stream_.avail_in = static_cast<std::uint32_t>(bytes.size());
    do {
      stream_.next_out = output_.data();
      stream_.avail_out = static_cast<std::uint32_t>(output_.size());
      isal_deflate(&stream_);
      packed_.append(as_chars(output_.data()), output_.size() - stream_.avail_out);
    } while (stream_.avail_out == 0);
  }

  isal_zstream stream_;
  std::array<unsigned char, ISAL_DEF_LVL2_DEFAULT> level_room_;
  std::array<unsigned char, std::size_t{16} * 1024> output_;
  std::string packed_;
};

Packer::Packer(std::size_t most) : most_(most) {}
Packer::~Packer() = default;

bool Packer::write(std::string_view bytes) {
  if (!is_long_ && bytes.size() > most_ - kept_.size()) {
    if (quick_ == nullptr) quick_ = std::make_unique<Quick>();
    is_long_ = true;
    quick_->write(std::exchange(kept_, {}));
  }
  if (is_long_) {
    quick_->write(bytes);
  } else {
    kept_ += bytes;
  }
  return true;
}

std::string Packer::finish() {
  if (std::exchange(is_long_, false)) return quick_->finish();
  std::string whole = pack_well(kept_);
  kept_.clear();
  return whole;
}

std::string packed(const std::function<void(Writer&)>& put) {
  Packer packer;
  StreamWriter out(packer);
  put(out);
  out.flush();
  return packer.finish();
}

}  // namespace CT::Report
