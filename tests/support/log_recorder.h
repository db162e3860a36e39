// SPDX-License-Identifier: MIT
//
// LogRecorder: while it lives, the process-wide log is fresh and every message up to a level is
// kept here.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kcommon/k_logger.h"

namespace CT::Test {

class LogRecorder {
 public:
  explicit LogRecorder(KLogger::Level level) {
    KLogger::destroyInstance();
    KLogger::instance().addSink(std::make_unique<Recorder>(lines_), level);
  }
  ~LogRecorder() { KLogger::destroyInstance(); }
  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;

  // "LEVEL TEXT" each, in order.
  const std::vector<std::string>& lines() const { return lines_; }

 private:
  class Recorder final : public KLogger::Sink {
   public:
    explicit Recorder(std::vector<std::string>& lines) : lines_(lines) {}
    void println(KLogger::Level level, const char*, int, std::string_view text) override {
      lines_.push_back(std::to_string(level) + " " + std::string(text));
    }

   private:
    std::vector<std::string>& lines_;
  };

  std::vector<std::string> lines_;
};

}  // namespace CT::Test
