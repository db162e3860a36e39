// SPDX-License-Identifier: MIT
#include "tools/common/ct_descriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace CT::Tool {

void StandardDescriptors::hold() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    const int useless_mode = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    static_cast<void>(open("/dev/null", useless_mode));
  }
}

}  // namespace CT::Tool
