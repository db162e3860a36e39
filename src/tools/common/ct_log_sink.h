// SPDX-License-Identifier: MIT
//
// Findings of a reading as lines of the log, each with the level of its kind.
#pragma once

#include "codetrace/render/ct_writer.h"
#include "codetrace/tree/ct_diagnostics.h"

namespace CT::Tool {

class LogSink final : public FindingSink {
 public:
  void report(const Finding& finding) override;

 private:
  MemoryWriter line_;
};

}  // namespace CT::Tool
