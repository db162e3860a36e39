// SPDX-License-Identifier: MIT
//
// Bytes packed into zlib streams (RFC 1950), which a browser unpacks by itself. The same bytes
// always become the same bytes.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "codetrace/render/ct_writer.h"

namespace CT::Report {

class Packer final : public Sink {
 public:
  // Of zlib's levels. Higher ones take much longer and gain little.
  static constexpr int usual_level = 6;
  static constexpr int fast_level = 1;

  // Throws std::bad_alloc.
  explicit Packer(int level = usual_level);
  ~Packer() override;

  // Pieces of any size. True.
  bool write(std::string_view bytes) override;
  // The stream of what was written since the last one; it can be written again.
  [[nodiscard]] std::string finish();

  // Bytes that the stream has so far, but for some that zlib still holds.
  [[nodiscard]] std::size_t size() const { return packed_.size(); }

 private:
  struct State;
  void run(std::string_view bytes, int flush);

  std::unique_ptr<State> state_;
  std::string packed_;
};

// What `put` writes, packed.
std::string packed(const std::function<void(Writer& out)>& put);

}  // namespace CT::Report
