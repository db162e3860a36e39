// SPDX-License-Identifier: MIT
//
// Where the bytes of a trace come from: a file, pipe or device that is opened by its name, memory,
// or a function of the caller. A disk source owns its descriptor; a memory source borrows the
// bytes. What cannot be opened or read is told by the result, with the system's words in error().
//
// Inside the library only: programs see CT::File.
#pragma once

#include <QString>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>

namespace CT {

// A file's identity, the same for all its names and descriptors. Only regular files have one: what
// is written to a pipe or a device does not harm what was read from it.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;

  static std::optional<FileIdentity> of(int descriptor);
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

class FileSource {
 public:
  FileSource() = default;
  FileSource(const FileSource&) = delete;
  FileSource& operator=(const FileSource&) = delete;
  virtual ~FileSource() = default;
  // Up to `size` bytes to `to`; 0 at the end, negative on an error (then `error` tells).
  virtual std::int64_t read(unsigned char* to, std::size_t size) = 0;
  [[nodiscard]] virtual QString error() const = 0;
  // The whole size where it is known beforehand, as it is not for a pipe.
  [[nodiscard]] virtual std::optional<std::uint64_t> size() const = 0;
};

class DiskSource final : public FileSource {
 public:
  ~DiskSource() override;

  // Waits for a pipe's writer, and so do reads. False, with `error`, also for a folder.
  bool open(const QString& name);
  std::int64_t read(unsigned char* to, std::size_t size) override;
  [[nodiscard]] QString error() const override { return error_; }
  [[nodiscard]] std::optional<std::uint64_t> size() const override;
  [[nodiscard]] std::optional<FileIdentity> identity() const {
    return FileIdentity::of(descriptor_);
  }

 private:
  int descriptor_ = -1;
  QString error_;
};

class MemorySource final : public FileSource {
 public:
  MemorySource(const unsigned char* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

  std::int64_t read(unsigned char* to, std::size_t size) override;
  [[nodiscard]] QString error() const override { return {}; }
  [[nodiscard]] std::optional<std::uint64_t> size() const override { return size_ - at_; }

 private:
  const unsigned char* bytes_;
  std::size_t size_;
  std::size_t at_ = 0;
};

// What a program hands out itself; borrows the function, which knows better what went wrong.
class CallerSource final : public FileSource {
 public:
  using Read = std::function<std::int64_t(unsigned char* to, std::size_t size)>;
  explicit CallerSource(const Read& read) : read_(read) {}

  std::int64_t read(unsigned char* to, std::size_t size) override;
  [[nodiscard]] QString error() const override;
  [[nodiscard]] std::optional<std::uint64_t> size() const override { return std::nullopt; }

 private:
  const Read& read_;
};

}  // namespace CT
