// SPDX-License-Identifier: MIT
#include "codetrace/ct_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <bit>
#include <cerrno>
#include <optional>

#include "kcommon/k_logger.h"

namespace CT {

// Where the bytes of a trace come from.
class File::Source {
 public:
  virtual ~Source() = default;
  // Up to `size` bytes to `to`; 0 at the end, negative on an error (then `error` tells).
  virtual std::int64_t read(unsigned char* to, std::size_t size) = 0;
  [[nodiscard]] virtual QString error() const = 0;
  // The whole size where it is known beforehand, as it is not for a pipe.
  [[nodiscard]] virtual std::optional<std::uint64_t> size() const = 0;
};

class File::DiskSource final : public Source {
 public:
  // Of a file that was opened by name, and so waits for its bytes.
  explicit DiskSource(int descriptor) : descriptor_(descriptor) {}

  std::int64_t read(unsigned char* to, std::size_t size) override {
    constexpr std::size_t largest = 1U << 30;
    while (true) {
      const ssize_t got = ::read(descriptor_, to, std::min(size, largest));
      if (got >= 0 || errno != EINTR) return got;
    }
  }
  [[nodiscard]] QString error() const override { return qt_error_string(errno); }
  [[nodiscard]] std::optional<std::uint64_t> size() const override {
    struct stat info = {};
    if (fstat(descriptor_, &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
    // Less what was read before the descriptor was handed to this process.
    const off_t at = lseek(descriptor_, 0, SEEK_CUR);
    const auto left = info.st_size - std::max<off_t>(at, 0);
    // Files that the kernel makes up as they are read, as in /proc, have size 0.
    if (left <= 0) return std::nullopt;
    return static_cast<std::uint64_t>(left);
  }

 private:
  int descriptor_;
};

class File::MemorySource final : public Source {
 public:
  MemorySource(const unsigned char* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

  std::int64_t read(unsigned char* to, std::size_t size) override {
    const std::size_t piece = std::min(size, size_ - at_);
    if (piece != 0) std::memcpy(to, bytes_ + at_, piece);
    at_ += piece;
    return static_cast<std::int64_t>(piece);
  }
  [[nodiscard]] QString error() const override { return {}; }
  [[nodiscard]] std::optional<std::uint64_t> size() const override { return size_ - at_; }

 private:
  const unsigned char* bytes_;
  std::size_t size_;
  std::size_t at_ = 0;
};

namespace {

// Fresh memory in large pages, where the system has them, costs less to fill. Only a hint.
void prefer_large_pages(void* memory, std::size_t size) {
  constexpr std::uintptr_t page = 4096;
  constexpr std::size_t least = std::size_t{4} << 20;
  if (size < least) return;
  const std::uintptr_t begin = (std::bit_cast<std::uintptr_t>(memory) + page - 1) & ~(page - 1);
  const std::uintptr_t end = (std::bit_cast<std::uintptr_t>(memory) + size) & ~(page - 1);
  static_cast<void>(madvise(std::bit_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
}

// Reads until `size` bytes are there or the source ends; -1 on an error.
template <class Source>
std::int64_t read_whole(Source& source, unsigned char* to, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const std::int64_t got = source.read(to + done, size - done);
    if (got < 0) return -1;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return static_cast<std::int64_t>(done);
}

}  // namespace

bool File::open() {
  reset();
  klog(4, "Opening Code Trace file {}", name_.toStdString());
  QFile file(name_);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return fail(file.errorString());
  klog(4, "Code Trace file {} opened", name_.toStdString());
  struct stat info = {};
  if (fstat(file.handle(), &info) == 0 && S_ISREG(info.st_mode)) {
    device_ = info.st_dev;
    inode_ = info.st_ino;
  }
  DiskSource source(file.handle());
  return load(source);
}

bool File::open(const unsigned char* bytes, std::size_t size) {
  reset();
  MemorySource source(bytes, size);
  return load(source);
}

void File::reset() {
  open_ = false;
  error_.clear();
  content_.reset();
  header_ = FileHeader();
  data_ = add_data_ = Section();
  device_ = inode_ = 0;
}

bool File::fail(QString message) {
  error_ = std::move(message);
  content_.reset();
  return false;
}

bool File::load(Source& source) {
  const std::optional<std::uint64_t> known_size = source.size();
  unsigned char head[FileHeader::disk_size];
  const std::int64_t head_size = read_whole(source, head, sizeof head);
  if (head_size < 0) return fail(source.error());
  auto got = static_cast<std::uint64_t>(head_size);
  const bool has_header = got == FileHeader::disk_size;
  if (has_header) {
    decode_header(head);
    // A file that is refused unread goes by its size in the log and in the message.
    if (known_size && (!is_trace() || *known_size != expected_size())) {
      got = *known_size;
    } else if (is_trace()) {
      const std::int64_t rest = read_sections(source, head, known_size.has_value());
      if (rest < 0) return fail(source.error());
      got += static_cast<std::uint64_t>(rest);
    }
  }
  klog(4, "Read {} bytes of data from the Code Trace file {}", got, name_.toStdString());
  if (!has_header) {
    return fail(QStringLiteral("Expect at least the size of Code Trace file header (%1 bytes), "
                               "but got %2 bytes")
                    .arg(FileHeader::disk_size)
                    .arg(got));
  }
  return check_header(got);
}

void File::decode_header(const unsigned char* bytes) {
  Cursor cursor(bytes, bytes + FileHeader::disk_size, true);
  std::memcpy(header_.magic, cursor.bytes(sizeof header_.magic), sizeof header_.magic);
  header_.version = cursor.u8();
  header_.flags = cursor.u8();
  header_.request_id = cursor.u32();
  header_.php_api_version = cursor.u32();
  header_.data_size = cursor.u32();
  header_.add_data_size = cursor.u32();
  header_.orig_data = cursor.u64();
  header_.orig_add_data = cursor.u64();
}

bool File::is_trace() const {
  return header_.magic[0] == 'C' && header_.magic[1] == 'T' && header_.version == 1;
}

std::uint64_t File::expected_size() const {
  return FileHeader::disk_size + std::uint64_t{header_.data_size} + header_.add_data_size;
}

// Reads both sections behind the header and counts what follows them, up to a limit, since a pipe
// may have no end; -1 on an error, with errno. Of a source of unknown size the memory grows with
// what arrives, so that a header that promises too much costs nothing.
std::int64_t File::read_sections(Source& source, const unsigned char* head, bool size_is_known) {
  constexpr std::uint64_t first_piece = 1U << 20;
  const std::uint64_t expected = expected_size();
  std::uint64_t capacity = size_is_known ? expected : std::min(expected, first_piece);
  std::uint64_t size = FileHeader::disk_size;
  while (true) {
    auto* grown = static_cast<unsigned char*>(std::realloc(content_.get(), capacity));
    if (grown == nullptr) {
      errno = ENOMEM;
      return -1;
    }
    static_cast<void>(content_.release());
    content_.reset(grown);
    prefer_large_pages(grown, capacity);
    const std::int64_t got = read_whole(source, grown + size, capacity - size);
    if (got < 0) return -1;
    size += static_cast<std::uint64_t>(got);
    if (size < capacity || capacity == expected) break;
    capacity = std::min(expected, 2 * capacity);
  }
  std::memcpy(content_.get(), head, FileHeader::disk_size);
  unsigned char surplus[4096];
  constexpr std::uint64_t most_surplus = 1U << 30;
  while (size >= expected && size - expected < most_surplus) {
    const std::int64_t got = source.read(surplus, sizeof surplus);
    if (got < 0) return -1;
    if (got == 0) break;
    size += static_cast<std::uint64_t>(got);
  }
  return static_cast<std::int64_t>(size - FileHeader::disk_size);
}

bool File::check_header(std::uint64_t got) {
  klog(5,
       "Code Trace dump file header:\n\tVERSION: {}\n\tFLAGS: 0x{:02x}\n\tREQUEST ID: {}\n\t"
       "PHP API VERSION: {}\n\tDATA: {} 0x{:x}\n\tADD DATA: {} 0x{:x}",
       header_.version, header_.flags, header_.request_id, header_.php_api_version,
       header_.data_size, header_.orig_data, header_.add_data_size, header_.orig_add_data);
  if (header_.magic[0] != 'C' || header_.magic[1] != 'T') {
    return fail(QStringLiteral("Invalid Code Trace dump file magic"));
  }
  if (header_.version != 1) {
    return fail(QStringLiteral("Unsupported Code Trace dump file version %1").arg(header_.version));
  }
  if (got != expected_size()) {
    return fail(
        QStringLiteral("Expected %1 bytes, but got %2 bytes").arg(expected_size()).arg(got));
  }
  const unsigned char* sections = content_.get() + FileHeader::disk_size;
  data_ = Section(sections, header_.data_size, header_.orig_data);
  add_data_ = Section(sections + header_.data_size, header_.add_data_size, header_.orig_add_data);
  open_ = true;
  return true;
}

bool File::is_same_file(const QString& path) const {
  struct stat info = {};
  return inode_ != 0 && stat(QFile::encodeName(path).constData(), &info) == 0 &&
         info.st_dev == device_ && info.st_ino == inode_;
}

}  // namespace CT
