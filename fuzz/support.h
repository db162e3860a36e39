// SPDX-License-Identifier: MIT
//
// What the fuzz targets share: a sink that has enough at some point, a silent log, values in a file
// of their own, and the comparison that ends the process on a difference. Nothing here is bounded
// by anything but the input's size, which libFuzzer limits.
#pragma once

#include <unistd.h>

#include <QtGlobal>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "codetrace/ct_file.h"
#include "codetrace/model/ct_checkpoint.h"
#include "codetrace/model/ct_view.h"
#include "codetrace/render/ct_writer.h"
#include "kcommon/k_logger.h"
#include "trace_builder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace CT::Fuzz {

// Counts what it is given and fails once that is too much: the indentation of deeply nested JSON
// grows with the square of the depth, and names that many values share are printed again and again.
class LimitedSink final : public Sink {
 public:
  bool write(std::string_view bytes) override {
    size_ += bytes.size();
    return size_ <= limit;
  }

 private:
  static constexpr std::size_t limit = std::size_t{4} * 1024 * 1024;
  std::size_t size_ = 0;
};

// Admits every message, so that all are formatted, and shows none. Qt's own are dropped too.
inline void silence_log() {
  class NullSink final : public KLogger::Sink {
    void println(KLogger::Level, const char*, int, std::string_view) override {}
  };
  static const bool once = [] {
    KLogger::instance().addSink(std::make_unique<NullSink>(),
                                std::numeric_limits<KLogger::Level>::max());
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return true;
  }();
  static_cast<void>(once);
}

// To the descriptor, since a target may mute the stream.
inline void report(std::string_view message) {
  while (!message.empty()) {
    const ssize_t taken = ::write(STDERR_FILENO, message.data(), message.size());
    if (taken <= 0) return;
    message.remove_prefix(static_cast<std::size_t>(taken));
  }
}

inline void expect(bool holds, const char* what) {
  if (holds) return;
  report("does not hold: " + std::string(what) + "\n");
  std::abort();
}

inline void expect_equal(const char* what, std::string_view ours, std::string_view expected) {
  if (ours == expected) return;
  report("differs: " + std::string(what) + "\nours:     " + std::string(ours) +
         "\nexpected: " + std::string(expected) + "\n");
  std::abort();
}

inline std::string_view as_text(const std::uint8_t* data, std::size_t size) {
  return {static_cast<const char*>(static_cast<const void*>(data)), size};
}

// An open file of one checkpoint, and a view that stands on it.
class OneCheckpoint {
 public:
  // Fields are encoded in the byte order; their references begin at default_orig_add_data.
  OneCheckpoint(Test::ByteOrder order, Checkpoint::Type type, const Test::Fields& payload,
                std::string_view add_data)
      : file_(QString()), view_(file_) {
    Test::TraceBuilder trace(order);
    trace.add_data(Test::Fields().raw(add_data));
    trace.add(Test::CheckpointDraft::raw(static_cast<std::uint8_t>(type), payload));
    const std::string bytes = trace.build();
    const void* const begin = bytes.data();
    expect(file_.open(static_cast<const unsigned char*>(begin), bytes.size()), "a true header");
    expect(view_.step(), "one checkpoint");
  }
  OneCheckpoint(const OneCheckpoint&) = delete;
  OneCheckpoint& operator=(const OneCheckpoint&) = delete;

  [[nodiscard]] const File& file() const { return file_; }
  [[nodiscard]] const CheckpointView& view() const { return view_; }

 private:
  File file_;
  CheckpointView view_;
};

// The input of the targets that look at one value. Byte 0: bit 0 is set for big-endian. Bytes 1 and
// 2, low byte first: how many bytes at the end are ADD DATA. The bytes between are the value.
struct ValueInput {
  static constexpr std::size_t header_size = 3;

  ValueInput(const std::uint8_t* data, std::size_t size) {
    if (size < header_size) return;
    const std::string_view rest = as_text(data, size).substr(header_size);
    const auto wanted = static_cast<std::size_t>(data[1] | data[2] << 8);
    order = (data[0] & 1) != 0 ? Test::ByteOrder::big : Test::ByteOrder::little;
    payload = rest.substr(0, rest.size() - std::min(wanted, rest.size()));
    add_data = rest.substr(payload.size());
  }

  // In the payload of a checkpoint whose own fields nobody reads.
  [[nodiscard]] OneCheckpoint checkpoint() const {
    return {order, Checkpoint::Type::USER_EVENT, Test::Fields().raw(payload), add_data};
  }

  Test::ByteOrder order = Test::ByteOrder::little;
  std::string_view payload;
  std::string_view add_data;
};

}  // namespace CT::Fuzz
