// SPDX-License-Identifier: MIT
//
// A file in the folder for temporary files, named after this process; removed when this object
// goes.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

namespace CT::Bench {

class TemporaryFile {
 public:
  // Makes no file yet.
  explicit TemporaryFile(const std::string& name)
      : path_(std::filesystem::temp_directory_path() / (std::to_string(getpid()) + "." + name)) {}
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] double mebibytes() const {
    return static_cast<double>(std::filesystem::file_size(path_)) / (1 << 20);
  }

 private:
  std::filesystem::path path_;
};

}  // namespace CT::Bench
