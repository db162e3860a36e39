// SPDX-License-Identifier: MIT
#include "codetrace/ct_file.h"

#include <sys/mman.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <optional>

#include "codetrace/ct_file_source.h"

namespace CT {

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
std::int64_t read_whole(FileSource& source, unsigned char* to, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const std::int64_t got = source.read(to + done, size - done);
    if (got < 0) return -1;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return static_cast<std::int64_t>(done);
}

// At least `digits` hex digits in lower case.
std::string hex(std::uint64_t number, std::size_t digits = 1) {
  char text[16];
  const auto written = std::to_chars(std::begin(text), std::end(text), number, 16);
  const std::string shortest(std::begin(text), written.ptr);
  return std::string(digits - std::min(digits, shortest.size()), '0') + shortest;
}

std::string lines_of(const FileHeader& header) {
  return "Code Trace dump file header:\n\tVERSION: " + std::to_string(header.version) +
         "\n\tFLAGS: 0x" + hex(header.flags, 2) +
         "\n\tREQUEST ID: " + std::to_string(header.request_id) +
         "\n\tPHP API VERSION: " + std::to_string(header.php_api_version) +
         "\n\tDATA: " + std::to_string(header.data_size) + " 0x" + hex(header.orig_data) +
         "\n\tADD DATA: " + std::to_string(header.add_data_size) + " 0x" +
         hex(header.orig_add_data);
}

}  // namespace

File::File(File&& other) noexcept : File(other.name_) { *this = std::move(other); }

File& File::operator=(File&& other) noexcept {
  if (this == &other) return *this;
  name_ = other.name_;
  log_ = std::move(other.log_);
  state_ = std::exchange(other.state_, State());
  return *this;
}

bool File::open() {
  state_ = State();
  log(4, "Opening Code Trace file " + name_.toStdString());
  DiskSource source;
  if (!source.open(name_)) return fail(source.error());
  log(4, "Code Trace file " + name_.toStdString() + " opened");
  if (const auto identity = source.identity()) {
    state_.device = identity->device;
    state_.inode = identity->inode;
  }
  return load(source);
}

bool File::open(const unsigned char* bytes, std::size_t size) {
  state_ = State();
  MemorySource source(bytes, size);
  return load(source);
}

bool File::open(std::span<const std::byte> bytes) {
  const void* const begin = bytes.data();
  return open(static_cast<const unsigned char*>(begin), bytes.size());
}

bool File::open(const Read& read) {
  state_ = State();
  CallerSource source(read);
  return load(source);
}

std::int64_t File::refused(QString message) {
  fail(std::move(message));
  return -1;
}

bool File::fail(QString message) {
  state_.error = std::move(message);
  state_.content.reset();
  return false;
}

// The place is this file, at the caller's line.
void File::log(int level, const std::string& text, int line) const {
  if (log_) log_(level, text, __FILE__, line);
}

bool File::load(FileSource& source) {
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
      if (rest < 0) return false;
      got += static_cast<std::uint64_t>(rest);
    }
  }
  log(4, "Read " + std::to_string(got) + " bytes of data from the Code Trace file " +
             name_.toStdString());
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
  std::memcpy(state_.header.magic, cursor.bytes(sizeof state_.header.magic),
              sizeof state_.header.magic);
  state_.header.version = cursor.u8();
  state_.header.flags = cursor.u8();
  state_.header.request_id = cursor.u32();
  state_.header.php_api_version = cursor.u32();
  state_.header.data_size = cursor.u32();
  state_.header.add_data_size = cursor.u32();
  state_.header.orig_data = cursor.u64();
  state_.header.orig_add_data = cursor.u64();
}

bool File::is_trace() const {
  return state_.header.magic[0] == 'C' && state_.header.magic[1] == 'T' &&
         state_.header.version == 1;
}

std::uint64_t File::expected_size() const {
  return FileHeader::disk_size + std::uint64_t{state_.header.data_size} +
         state_.header.add_data_size;
}

// Reads both sections behind the header and counts what follows them, up to a limit, since a pipe
// may have no end; -1 after a failure. Of a source of unknown size the memory grows with what
// arrives, so that a header that promises too much costs nothing.
std::int64_t File::read_sections(FileSource& source, const unsigned char* head,
                                 bool size_is_known) {
  constexpr std::uint64_t first_piece = 1U << 20;
  const std::uint64_t expected = expected_size();
  std::uint64_t capacity = size_is_known ? expected : std::min(expected, first_piece);
  std::uint64_t size = FileHeader::disk_size;
  while (true) {
    unsigned char* const room = make_room(capacity);
    if (room == nullptr) return refused(qt_error_string(ENOMEM));
    const std::int64_t got = read_whole(source, room + size, capacity - size);
    if (got < 0) return refused(source.error());
    size += static_cast<std::uint64_t>(got);
    if (size < capacity || capacity == expected) break;
    capacity = std::min(expected, 2 * capacity);
  }
  std::memcpy(state_.content.get(), head, FileHeader::disk_size);
  std::memset(state_.content.get() + size, 0, padding);
  unsigned char surplus[4096];
  constexpr std::uint64_t most_surplus = 1U << 30;
  while (size >= expected && size - expected < most_surplus) {
    const std::int64_t got = source.read(surplus, sizeof surplus);
    if (got < 0) return refused(source.error());
    if (got == 0) break;
    size += static_cast<std::uint64_t>(got);
  }
  return static_cast<std::int64_t>(size - FileHeader::disk_size);
}

// Room for `size` bytes and the padding, with the bytes that were there; null if there is none.
unsigned char* File::make_room(std::uint64_t size) {
  auto* const grown =
      static_cast<unsigned char*>(std::realloc(state_.content.get(), size + padding));
  if (grown == nullptr) return nullptr;
  static_cast<void>(state_.content.release());
  state_.content.reset(grown);
  prefer_large_pages(grown, size + padding);
  return grown;
}

bool File::check_header(std::uint64_t got) {
  log(5, lines_of(state_.header));
  if (state_.header.magic[0] != 'C' || state_.header.magic[1] != 'T') {
    return fail(QStringLiteral("Invalid Code Trace dump file magic"));
  }
  if (state_.header.version != 1) {
    return fail(
        QStringLiteral("Unsupported Code Trace dump file version %1").arg(state_.header.version));
  }
  if (got != expected_size()) {
    return fail(
        QStringLiteral("Expected %1 bytes, but got %2 bytes").arg(expected_size()).arg(got));
  }
  const unsigned char* sections = state_.content.get() + FileHeader::disk_size;
  state_.data = Section(sections, state_.header.data_size, state_.header.orig_data);
  state_.add_data = Section(sections + state_.header.data_size, state_.header.add_data_size,
                            state_.header.orig_add_data);
  state_.open = true;
  return true;
}

bool File::is_same_file(int descriptor) const {
  const auto identity = FileIdentity::of(descriptor);
  return state_.inode != 0 && identity == FileIdentity{state_.device, state_.inode};
}

}  // namespace CT
