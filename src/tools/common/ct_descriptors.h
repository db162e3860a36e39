// SPDX-License-Identifier: MIT
//
// Descriptors 0 to 2 of a process that may have been started without some of them. Those that were
// closed are held, so that no file opened later lands on them, and stay useless: a read or write
// fails as it would have. They are held until the process ends; a system that cannot hold them
// leaves them as they were.
#pragma once

namespace CT::Tool {

class StandardDescriptors {
 public:
  StandardDescriptors() { hold(); }
  StandardDescriptors(const StandardDescriptors&) = delete;
  StandardDescriptors& operator=(const StandardDescriptors&) = delete;

  // open(2) for a file to be written, made if it is not there, never emptied: a descriptor above
  // 2, or -1 with errno. A name such as /dev/stdout finds what the process was started with, and
  // nothing where that was closed.
  int open_output(const char* path);

 private:
  void hold();
  void let_go();

  bool held_[3] = {};
};

}  // namespace CT::Tool
