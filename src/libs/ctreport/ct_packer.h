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
  // Whether time is spent on making the stream short. What a trace of usual length has, is small
  // and worth it.
  enum class Effort { usual, little };

  // Throws std::bad_alloc.
  explicit Packer(Effort effort = Effort::usual);
  ~Packer() override;

  // Pieces of any size. True.
  bool write(std::string_view bytes) override;
  // The stream of what was written since the last one; another one can be written behind it.
  [[nodiscard]] std::string finish();
  // Goes on with little effort; in what was hard to pack so far, repetitions that lie apart are not
  // looked for any more. To be called once, within a stream that is the only one.
  void hurry();

 private:
  struct State;
  template <class Step>
  void run(std::string_view bytes, Step step);

  std::unique_ptr<State> state_;
  std::string packed_;
};

// What `put` writes, packed.
std::string packed(const std::function<void(Writer& out)>& put);

}  // namespace CT::Report
