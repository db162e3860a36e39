// SPDX-License-Identifier: MIT
//
// FileLines: what files tell while they are opened, for a CT::File::set_log. It outlives them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "codetrace/ct_file.h"

namespace CT::Test {

class FileLines {
 public:
  FileLines() = default;
  FileLines(const FileLines&) = delete;
  FileLines& operator=(const FileLines&) = delete;

  FileLog log() {
    return [this](int level, std::string_view text, const char* file, int line) {
      lines_.push_back(std::to_string(level) + " " + std::string(text));
      places_.push_back(std::string(file) + (line > 0 ? ":N" : ":?"));
    };
  }

  // "LEVEL TEXT" each, in order.
  const std::vector<std::string>& lines() const { return lines_; }
  // Where each was told: "FILE:N".
  const std::vector<std::string>& places() const { return places_; }
  void clear() {
    lines_.clear();
    places_.clear();
  }

 private:
  std::vector<std::string> lines_;
  std::vector<std::string> places_;
};

}  // namespace CT::Test
