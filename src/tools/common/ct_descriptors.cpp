// SPDX-License-Identifier: MIT
#include "tools/common/ct_descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace CT::Tool {

void StandardDescriptors::hold() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    const int useless_mode = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    held_[descriptor] = open("/dev/null", useless_mode) == descriptor;
  }
}

void StandardDescriptors::let_go() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (held_[descriptor]) close(descriptor);
    held_[descriptor] = false;
  }
}

int StandardDescriptors::open_output(const char* path) {
  // What holds a descriptor could be opened by way of /dev/stdout, and would swallow everything.
  let_go();
  int opened = -1;
  do {
    opened = open(path, O_WRONLY | O_CREAT | O_CLOEXEC | O_LARGEFILE, 0666);
  } while (opened < 0 && errno == EINTR);
  int error = errno;
  if (opened >= 0 && opened <= STDERR_FILENO) {
    const int low = opened;
    opened = fcntl(low, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    error = errno;
    close(low);
  }
  hold();
  errno = error;
  return opened;
}

}  // namespace CT::Tool
