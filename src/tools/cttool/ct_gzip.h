// SPDX-License-Identifier: MIT
//
// What is written, compressed with gzip on its way. The same bytes always become the same bytes:
// neither a name nor a time is in it.
#pragma once

#include <memory>
#include <string_view>

#include "codetrace/render/ct_writer.h"

namespace CT::Tool {

class GzipSink final : public Sink {
 public:
  // Borrows: where it goes. Throws std::bad_alloc.
  explicit GzipSink(Sink& to);
  ~GzipSink() override;

  bool write(std::string_view bytes) override;
  // Hands on what is left. False if not all was taken.
  [[nodiscard]] bool finish();

 private:
  struct State;
  bool run(std::string_view bytes, int flush);

  Sink& to_;
  std::unique_ptr<State> state_;
};

}  // namespace CT::Tool
