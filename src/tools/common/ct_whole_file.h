// SPDX-License-Identifier: MIT
//
// A file that is there only once it is whole. It is written under another name beside the one that
// was asked for, and renamed at the end; until then what had that name before stays as it was. What
// is not finished is removed, also where a signal such as that of Ctrl-C ends the process.
//
// Devices and pipes cannot be replaced: they are written where they are.
#pragma once

#include <string>

namespace CT::Tool {

class WholeFile {
 public:
  // At most one at a time.
  explicit WholeFile(std::string name) : name_(std::move(name)) {}
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  // Makes the file that is to be written, empty. False, with errno, if that cannot be done.
  [[nodiscard]] bool begin();
  // What to write to: a file beside the name, or the name itself for a device or a pipe.
  [[nodiscard]] const std::string& path() const { return path_; }
  // Whether the name is that of a device or a pipe.
  [[nodiscard]] bool is_in_place() const { return is_in_place_; }
  // Gives the file its name. False, with errno, if that cannot be done.
  [[nodiscard]] bool finish();

 private:
  void forget();

  std::string name_;
  std::string path_;
  bool is_in_place_ = false;
  bool is_begun_ = false;
};

}  // namespace CT::Tool
