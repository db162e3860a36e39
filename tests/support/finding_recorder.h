// SPDX-License-Identifier: MIT
//
// FindingRecorder: keeps every finding that a reading reports, as a line of text.
#pragma once

#include <string>
#include <vector>

#include "codetrace/render/ct_writer.h"
#include "codetrace/tree/ct_diagnostics.h"

namespace CT::Test {

class FindingRecorder final : public FindingSink {
 public:
  void report(const Finding& finding) override {
    MemoryWriter text;
    write_text(finding, text);
    lines_.push_back(std::to_string(finding_info(finding.kind).level) + " " +
                     std::string(text.view()));
  }

  // "LEVEL TEXT" each, in order.
  const std::vector<std::string>& lines() const { return lines_; }
  void clear() { lines_.clear(); }

 private:
  std::vector<std::string> lines_;
};

}  // namespace CT::Test
