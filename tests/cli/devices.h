// SPDX-License-Identifier: MIT
//
// Devices: a folder with a small trace `t.ct`, in which commands are run by a shell that knows the
// tool as `codetrace`. What a command leaves behind is compared whole.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "process.h"
#include "trace_text.h"

namespace CT::Test {

inline constexpr const char* trace_text =
    "order little\n"
    "startup @10 url \"http://h/\" uri \"/\"\n"
    "shutdown @11\n";
// What the tool prints about t.ct.
inline constexpr const char* line = "REQUEST STARTUP: REQUEST: http://h/, URL: /\n";

// The address space that tests leave to the tool is not enough for AddressSanitizer.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool is_sanitized = true;
#else
inline constexpr bool is_sanitized = false;
#endif

class Devices : public testing::Test {
 protected:
  void SetUp() override {
    bytes_ = build_traces(trace_text).front().bytes;
    write_file(folder_.path() / "t.ct", bytes_);
  }

  ProcessResult shell(const std::string& command) {
    const std::string with_tool = "codetrace() { '" CODETRACE_BINARY "' \"$@\"; }; " + command;
    return run_process("/bin/sh", {"sh", "-c", with_tool}, folder_.path());
  }

  void expect(const std::string& command, const std::string& output, const std::string& error,
              int status) {
    const ProcessResult result = shell(command);
    EXPECT_EQ(result.standard_output, output) << command;
    EXPECT_EQ(result.standard_error, error) << command;
    EXPECT_EQ(result.status, status) << command;
  }

  [[nodiscard]] std::string content(const std::string& name) const {
    return read_file(folder_.path() / name);
  }

  TemporaryFolder folder_;
  std::string bytes_;
};

}  // namespace CT::Test
