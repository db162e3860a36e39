// SPDX-License-Identifier: MIT
//
// Takes archives of gzip, xz and zstd apart, a piece at a time. Several of a kind behind each other
// are one. Memory stays within bounds whatever the archive asks for, and so does what comes out.
//
// An archive that is damaged or cut short hands out what comes before that and ends there;
// error() tells.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace CT::Tool {

enum class Archive { none, gzip, xz, zstd };

// So many bytes tell which it is.
inline constexpr std::size_t archive_mark_size = 6;
Archive archive_of(std::string_view first_bytes);

class Decompressor {
 public:
  // Up to `size` bytes, 0 at the end, negative if they cannot be had.
  using Read = std::function<std::int64_t(unsigned char* to, std::size_t size)>;

  // Bytes that were read and not taken apart yet.
  struct Bytes {
    const unsigned char* data = nullptr;
    std::size_t size = 0;
    bool is_last = false;  // nothing comes behind them
  };

  // Of a kind that is none: null. Throws std::bad_alloc. `limit`: bytes that may come out.
  static std::unique_ptr<Decompressor> make(Archive kind, Read compressed, std::uint64_t limit);

  virtual ~Decompressor() = default;
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;

  // As Read. Negative also once more came out than is allowed.
  std::int64_t read(unsigned char* to, std::size_t size);

  // What is wrong with the archive, without a full stop; empty if nothing is.
  [[nodiscard]] const std::string& error() const { return error_; }
  [[nodiscard]] bool is_too_large() const { return is_too_large_; }

 protected:
  Decompressor() = default;

  // Takes from `input` and writes up to `size` bytes to `to`; how many. Calls end() or fail() when
  // that was all, and otherwise needs more input, or more room, when it writes nothing.
  virtual std::size_t step(Bytes& input, unsigned char* to, std::size_t size) = 0;
  void end() { has_ended_ = true; }
  void fail(std::string what);
  void fail_short() { fail("it ends too early"); }

 private:
  bool fill();

  static constexpr std::size_t buffer_size = std::size_t{64} * 1024;
  Read compressed_;
  std::uint64_t limit_ = 0;
  std::uint64_t total_ = 0;
  std::array<unsigned char, buffer_size> buffer_ = {};
  Bytes input_;
  std::string error_;
  bool has_ended_ = false;
  bool is_too_large_ = false;
};

}  // namespace CT::Tool
