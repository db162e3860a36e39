// SPDX-License-Identifier: MIT
//
// Where every output goes: bytes are put into a buffer that is either handed on to a sink each time
// it is full (`StreamWriter`) or grows (`MemoryWriter`). The hot calls are inline; only a full
// buffer costs a virtual call.
//
// A sink that fails makes its writer fail for good: what follows is dropped, `ok()` tells.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "kcommon/k_export.h"

namespace CT {

class CODETRACE_EXPORT Writer {
 public:
  // The most that `room` may be asked for.
  static constexpr std::size_t max_room = 512;

  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  virtual ~Writer() = default;

  [[nodiscard]] bool ok() const { return ok_; }

  void put(char c) {
    *room(1) = c;
    ++at_;
  }

  void put(std::string_view text) {
    if (text.empty()) return;
    if (text.size() > static_cast<std::size_t>(end_ - at_)) {
      put_in_pieces(text);
      return;
    }
    std::memcpy(at_, text.data(), text.size());
    at_ += text.size();
  }

  // Fixed texts, whose length the compiler knows. Of any other array what stands before its NUL.
  template <std::size_t Size>
  void put(const char (&literal)[Size]) {
    static_assert(Size <= max_room);
    const std::size_t length =
        literal[Size - 1] == '\0' ? __builtin_strlen(literal) : strnlen(literal, Size);
    std::memcpy(room(Size), literal, length);
    at_ += length;
  }

  // The same byte `count` times.
  void fill(char c, std::size_t count);

  // Room for `count` bytes, at most `max_room`, to be written in place; `advance` then takes them.
  [[nodiscard]] char* room(std::size_t count) {
    assert(count <= max_room);
    if (static_cast<std::size_t>(end_ - at_) < count) make_room();
    return at_;
  }
  void advance(char* end) { at_ = end; }

 protected:
  Writer() = default;

  // Leaves at least `max_room` bytes between `at_` and `end_`.
  virtual void make_room() = 0;

  char* at_ = nullptr;
  char* end_ = nullptr;
  bool ok_ = true;

 private:
  void put_in_pieces(std::string_view text);
};

// Takes what a StreamWriter hands on.
class CODETRACE_EXPORT Sink {
 public:
  virtual ~Sink() = default;
  // True when every byte was taken.
  virtual bool write(std::string_view bytes) = 0;
};

class CODETRACE_EXPORT StreamWriter final : public Writer {
 public:
  // Borrows: the sink, which must outlive the writer. Nothing is written by the destructor.
  explicit StreamWriter(Sink& sink);

  // Hands on what is buffered; returns ok().
  bool flush();

 private:
  void make_room() override { flush(); }

  static constexpr std::size_t capacity = std::size_t{64} * 1024;
  Sink& sink_;
  std::unique_ptr<char[]> buffer_;
};

class CODETRACE_EXPORT MemoryWriter final : public Writer {
 public:
  MemoryWriter() { make_room(); }

  [[nodiscard]] std::string_view view() const { return {buffer_.get(), size()}; }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(at_ - buffer_.get()); }

  // Forgets everything behind the first `size` bytes; keeps the memory.
  void truncate(std::size_t size) { at_ = buffer_.get() + size; }
  void clear() { truncate(0); }

 private:
  void make_room() override;

  std::unique_ptr<char[]> buffer_;
};

}  // namespace CT
