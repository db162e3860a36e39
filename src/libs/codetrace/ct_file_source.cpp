// SPDX-License-Identifier: MIT
#include "codetrace/ct_file_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <cerrno>

namespace CT {

std::optional<FileIdentity> FileIdentity::of(int descriptor) {
  struct stat info = {};
  if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  return FileIdentity{info.st_dev, info.st_ino};
}

DiskSource::~DiskSource() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

// Not by QFile, which takes names that begin with ':' for something else than files.
bool DiskSource::open(const QString& name) {
  if (name.isEmpty()) {
    error_ = QStringLiteral("No file name specified");
    return false;
  }
  const QByteArray path = QFile::encodeName(name);
  constexpr int flags = O_RDONLY | O_CLOEXEC;
  do {
    descriptor_ = ::open(path.constData(), flags | O_LARGEFILE);
  } while (descriptor_ < 0 && errno == EINTR);
  if (descriptor_ < 0) {
    error_ = qt_error_string(errno);
    return false;
  }
  struct stat info = {};
  if (fstat(descriptor_, &info) == 0 && S_ISDIR(info.st_mode)) {
    // Kept: the words of QFile, not the system's "Is a directory".
    error_ = QStringLiteral("file to open is a directory");
    return false;
  }
  return true;
}

std::int64_t DiskSource::read(unsigned char* to, std::size_t size) {
  constexpr std::size_t largest = 1U << 30;
  while (true) {
    const ssize_t got = ::read(descriptor_, to, std::min(size, largest));
    if (got >= 0) return got;
    if (errno == EINTR) continue;
    error_ = qt_error_string(errno);
    return -1;
  }
}

std::optional<std::uint64_t> DiskSource::size() const {
  struct stat info = {};
  if (fstat(descriptor_, &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  // Less what was read before the descriptor was handed to this process.
  const off_t at = lseek(descriptor_, 0, SEEK_CUR);
  const auto left = info.st_size - std::max<off_t>(at, 0);
  // Files that the kernel makes up as they are read, as in /proc, have size 0.
  if (left <= 0) return std::nullopt;
  return static_cast<std::uint64_t>(left);
}

std::int64_t MemorySource::read(unsigned char* to, std::size_t size) {
  const std::size_t piece = std::min(size, size_ - at_);
  if (piece != 0) std::memcpy(to, bytes_ + at_, piece);
  at_ += piece;
  return static_cast<std::int64_t>(piece);
}

// No more than was asked for, whatever the caller says.
std::int64_t CallerSource::read(unsigned char* to, std::size_t size) {
  return std::min(read_(to, size), static_cast<std::int64_t>(size));
}

QString CallerSource::error() const { return qt_error_string(EIO); }

}  // namespace CT
