// SPDX-License-Identifier: MIT
#include "tools/common/ct_output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>

namespace CT::Tool {

bool Output::open() {
  if (name_.isEmpty()) {
    descriptor_ = STDOUT_FILENO;
    return true;
  }
  // QFile opens, for its rules about names and its messages; from then on the descriptor is ours,
  // for QFile would not tell whether closing went well.
  QFile file(name_);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
    error_ = file.errorString();
    return false;
  }
  descriptor_ = fcntl(file.handle(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  return descriptor_ >= 0 || fail(errno);
}

bool Output::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR || (errno == EAGAIN && wait_for_room())) continue;
      return fail(errno);
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// For a descriptor that somebody else made non-blocking.
bool Output::wait_for_room() const {
  pollfd wanted = {descriptor_, POLLOUT, 0};
  return poll(&wanted, 1, -1) > 0 || errno == EINTR;
}

bool Output::close() {
  // Standard output is closed too: a device may report only then that it took less than it said.
  if (descriptor_ >= 0 && ::close(descriptor_) != 0 && errno != EINTR) fail(errno);
  descriptor_ = -1;
  return error_.isEmpty();
}

bool Output::fail(int error) {
  if (error_.isEmpty()) error_ = qt_error_string(error);
  pipe_closed_ = pipe_closed_ || error == EPIPE;
  return false;
}

}  // namespace CT::Tool
