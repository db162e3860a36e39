// SPDX-License-Identifier: MIT
//
// What tests of the writer share: the file that it makes, as a string, and short ways to records.
#pragma once

#include <cerrno>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "codetrace/model/ct_types.h"
#include "ctwrite/ct_trace_writer.h"
#include "trace_builder.h"

namespace CT::Test {

// Takes everything, or so many bytes and then no more.
class StringDestination final : public Write::Destination {
 public:
  explicit StringDestination(std::size_t most = std::string::npos) : most_(most) {}
  bool write(std::span<const unsigned char> bytes) noexcept override {
    if (bytes.size() > most_ - text.size()) {
      errno = ENOSPC;
      return false;
    }
    text.append(bytes.begin(), bytes.end());
    return true;
  }
  std::string text;

 private:
  std::size_t most_;
};

// The whole file.
inline std::string finished(Write::TraceWriter& writer) {
  StringDestination destination;
  if (!writer.finish(destination) || destination.text.size() != writer.file_size()) {
    throw std::runtime_error(std::string(Write::describe(writer.error())));
  }
  return destination.text;
}

inline std::span<const unsigned char> as_bytes(std::string_view text) {
  const void* const begin = text.data();
  return {static_cast<const unsigned char*>(begin), text.size()};
}

// As TraceBuilder has it, so that both write the same addresses.
inline Write::Options options_of(ByteOrder order, Write::Limits limits = {}) {
  Write::Options options;
  options.big_endian = order == ByteOrder::big;
  options.orig_data = TraceBuilder::default_orig_data;
  options.orig_add_data = TraceBuilder::default_orig_add_data;
  options.limits = limits;
  return options;
}

}  // namespace CT::Test
