// SPDX-License-Identifier: MIT
//
// Bytes packed into zlib streams (RFC 1950), which a browser unpacks by itself. On one machine the
// same bytes always become the same bytes.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "codetrace/render/ct_writer.h"

namespace CT::Report {

// A stream that is short is packed well, at its end; what a trace of usual length has, is worth the
// time. A longer one is packed as it comes, many times quicker.
class Packer final : public Sink {
 public:
  static constexpr std::size_t usually_short = std::size_t{256} << 10;

  // `most`: bytes of a stream that is still short.
  explicit Packer(std::size_t most = usually_short);
  ~Packer() override;

  // Pieces of any size. True. Throws std::bad_alloc, as finish() does.
  bool write(std::string_view bytes) override;
  // The stream of what was written since the last one; another one can be written behind it.
  [[nodiscard]] std::string finish();

 private:
  class Quick;

  std::size_t most_;
  std::string kept_;  // while the stream is short
  std::unique_ptr<Quick> quick_;
  bool is_long_ = false;
};

// What `put` writes, packed.
std::string packed(const std::function<void(Writer& out)>& put);

}  // namespace CT::Report
