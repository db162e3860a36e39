// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_byte_input.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace CT::Tool {

ByteInput::~ByteInput() {
  if (descriptor_ > STDIN_FILENO) close(descriptor_);
}

bool ByteInput::open(const std::string& name) {
  if (name == "-") {
    descriptor_ = STDIN_FILENO;
    return true;
  }
  do {
    descriptor_ = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
  } while (descriptor_ < 0 && errno == EINTR);
  struct stat info = {};
  if (descriptor_ < 0 || fstat(descriptor_, &info) != 0) {
    error_ = errno;
    return false;
  }
  if (S_ISDIR(info.st_mode)) error_ = EISDIR;
  is_named_file_ = S_ISREG(info.st_mode);
  return error_ == 0;
}

std::uint64_t ByteInput::size() const {
  struct stat info = {};
  if (fstat(descriptor_, &info) != 0 || !S_ISREG(info.st_mode)) return 0;
  const off_t at = lseek(descriptor_, 0, SEEK_CUR);
  const off_t left = info.st_size - std::max<off_t>(at, 0);
  return first_.size() + static_cast<std::uint64_t>(std::max<off_t>(left, 0));
}

std::string_view ByteInput::first(std::size_t size) {
  unsigned char bytes[16];
  while (first_.size() < size) {
    const std::int64_t got = read_more(bytes, std::min(sizeof bytes, size - first_.size()));
    if (got <= 0) break;
    first_.insert(first_.end(), bytes, bytes + got);
  }
  return first_;
}

std::int64_t ByteInput::read(unsigned char* to, std::size_t size) {
  if (first_.empty()) return read_more(to, size);
  const std::size_t piece = std::min(size, first_.size());
  std::memcpy(to, first_.data(), piece);
  first_.erase(0, piece);
  return static_cast<std::int64_t>(piece);
}

std::int64_t ByteInput::read_more(unsigned char* to, std::size_t size) {
  constexpr std::size_t largest = std::size_t{1} << 30;
  while (true) {
    const ssize_t got = ::read(descriptor_, to, std::min(size, largest));
    if (got >= 0) return got;
    pollfd wanted = {descriptor_, POLLIN, 0};
    // Somebody else may have made the descriptor non-blocking.
    const bool waits = errno == EAGAIN && (poll(&wanted, 1, -1) > 0 || errno == EINTR);
    if (errno == EINTR || waits) continue;
    error_ = errno;
    return -1;
  }
}

}  // namespace CT::Tool
