// SPDX-License-Identifier: MIT
//
// Running a program to its end with its outputs caught, and a folder that is gone afterwards.
// Failures of the system are thrown as std::system_error.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace CT::Test {

struct ProcessResult {
  std::string standard_output;
  std::string standard_error;
  int status = 0;  // the exit status, or 128 + the number of the signal that ended it
};

// Runs `program` in the folder `folder`; words[0] is the name that it is told. Its standard input
// is empty and its locale is C.UTF-8.
ProcessResult run_process(const std::filesystem::path& program,
                          const std::vector<std::string>& words,
                          const std::filesystem::path& folder);

class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

std::string read_file(const std::filesystem::path& path);
void write_file(const std::filesystem::path& path, const std::string& bytes);

}  // namespace CT::Test
