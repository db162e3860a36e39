// SPDX-License-Identifier: MIT
#include "tools/common/ct_output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>

namespace CT::Tool {

namespace {

// Devices and pipes have nothing that could be removed.
bool empty_file(int descriptor) {
  struct stat info = {};
  if (fstat(descriptor, &info) != 0) return false;
  if (!S_ISREG(info.st_mode)) return true;
  int result = 0;
  do {
    result = ftruncate(descriptor, 0);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

// For a file that may not be written, whose identity can be asked for all the same.
bool is_input_by_name(const char* path, const Output::IsInput& is_input) {
  const int descriptor = ::open(path, O_PATH | O_CLOEXEC);
  const bool result = descriptor >= 0 && is_input(descriptor);
  if (descriptor >= 0) ::close(descriptor);
  return result;
}

}  // namespace

bool Output::open(const IsInput& is_input) {
  if (!name_.isEmpty()) return open_file(is_input);
  if (is_input(STDOUT_FILENO)) return refuse();
  descriptor_ = STDOUT_FILENO;
  return true;
}

// Not by QFile, which takes names that begin with ':' for something else than files, and which
// would not tell whether closing went well.
bool Output::open_file(const IsInput& is_input) {
  const QByteArray path = QFile::encodeName(name_);
  descriptor_ = standard_.open_output(path.constData());
  if (descriptor_ < 0) {
    const int error = errno;
    return is_input_by_name(path.constData(), is_input) ? refuse() : fail(error);
  }
  if (is_input(descriptor_)) return refuse();
  return empty_file(descriptor_) || fail(errno);
}

bool Output::write(std::string_view bytes) {
  // A device that takes nothing, again and again, would keep the run for ever.
  constexpr int most_futile_writes = 8;
  int futile_writes = 0;
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR || (errno == EAGAIN && wait_for_room())) continue;
      return fail(errno);
    }
    futile_writes = written == 0 ? futile_writes + 1 : 0;
    if (futile_writes == most_futile_writes) return fail(EIO);
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

bool Output::refuse() {
  error_ = QStringLiteral("it is the Code Trace file itself");
  return false;
}

bool Output::fail(int error) {
  if (error_.isEmpty()) error_ = qt_error_string(error);
  pipe_closed_ = pipe_closed_ || error == EPIPE;
  return false;
}

}  // namespace CT::Tool
