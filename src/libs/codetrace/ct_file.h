// SPDX-License-Identifier: MIT
//
// A Code Trace file in memory: the 36-byte header, then DATA (the checkpoints), then ADD DATA
// (texts and descriptors that checkpoints refer to). CT::File owns the bytes; everything decoded
// points into them, so the file outlives records, values, nodes and the storage.
//
// A file that is not a whole trace is refused with a message. It is refused as early as its bytes
// allow: no more than the header is read of a file that is no trace, and never more memory is taken
// than a valid header declares.
#pragma once

#include <QString>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "codetrace/bytes/ct_cursor.h"
#include "kcommon/k_export.h"

namespace CT {

// The header in host order; on disk it is packed and always big-endian.
struct CODETRACE_EXPORT FileHeader {
  static constexpr std::size_t disk_size = 36;
  static constexpr std::uint8_t big_endian_flag = 0x02;

  char magic[2] = {'C', 'T'};
  std::uint8_t version = 1;
  std::uint8_t flags = 0;
  std::uint32_t request_id = 0;
  std::uint32_t php_api_version = 0;
  std::uint32_t data_size = 0;
  std::uint32_t add_data_size = 0;
  std::uint64_t orig_data = 0;      // where DATA lay in the writer's memory
  std::uint64_t orig_add_data = 0;  // where ADD DATA lay there
};

// Gets what happens while a file is opened, if somebody wants to know: 4 for the steps, 5 for the
// header, the text, and the place in the source that it comes from.
using FileLog =
    std::function<void(int level, std::string_view text, const char* source_file, int line)>;

class FileSource;

class CODETRACE_EXPORT File {
 public:
  // So many bytes behind the last one of the file are readable and zero, for loads of a fixed size
  // that begin inside. No size counts them.
  static constexpr std::size_t padding = 32;

  explicit File(QString name) : name_(std::move(name)) {}
  ~File() = default;
  // The bytes stay where they are, and with them what points into them; what borrows the File
  // itself does not follow. The file that was moved from is as before its first opening.
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  // From now on each opening is told to `log`.
  void set_log(FileLog log) { log_ = std::move(log); }

  // Reads and checks the file of this name, which may be a pipe. False, with error_message(), if it
  // cannot be read or is not a whole trace. Opening again starts afresh.
  bool open();

  // The same for bytes in memory, which are copied.
  bool open(const unsigned char* bytes, std::size_t size);
  bool open(std::span<const std::byte> bytes);

  // Hands out up to `size` bytes, at least one before the end: how many, 0 at the end, negative if
  // they cannot be had.
  using Read = std::function<std::int64_t(unsigned char* to, std::size_t size)>;

  // The same for bytes that come from somewhere else, such as an archive. How many there are need
  // not be known before.
  bool open(const Read& read);

  // True only after a successful open.
  [[nodiscard]] bool is_open() const { return state_.open; }
  // Why the last open failed.
  [[nodiscard]] const QString& error_message() const { return state_.error; }
  [[nodiscard]] const QString& name() const { return name_; }

  // Set from the moment that 36 bytes could be read, valid or not.
  [[nodiscard]] const FileHeader& header() const { return state_.header; }
  // The byte order of everything in both sections (not of the header).
  [[nodiscard]] bool big_endian() const {
    return (state_.header.flags & FileHeader::big_endian_flag) != 0;
  }
  [[nodiscard]] const Section& data() const { return state_.data; }
  [[nodiscard]] const Section& add_data() const { return state_.add_data; }

  // True when the open descriptor is of the very file on disk that was read, by whatever name. A
  // descriptor, not a path: what a path means may change before somebody opens it.
  [[nodiscard]] bool is_same_file(int descriptor) const;

 private:
  struct Free {
    void operator()(unsigned char* bytes) const { std::free(bytes); }
  };

  struct State {
    bool open = false;
    QString error;
    std::unique_ptr<unsigned char, Free> content;
    FileHeader header;
    Section data;
    Section add_data;
    std::uint64_t device = 0;  // identity on disk; inode 0 for none
    std::uint64_t inode = 0;
  };

  CODETRACE_HIDDEN bool fail(QString message);
  CODETRACE_HIDDEN std::int64_t refused(QString message);
  CODETRACE_HIDDEN void log(int level, const std::string& text, int line = __builtin_LINE()) const;
  CODETRACE_HIDDEN bool load(FileSource& source);
  CODETRACE_HIDDEN void decode_header(const unsigned char* bytes);
  [[nodiscard]] CODETRACE_HIDDEN bool is_trace() const;
  [[nodiscard]] CODETRACE_HIDDEN std::uint64_t expected_size() const;
  CODETRACE_HIDDEN std::int64_t read_sections(FileSource& source, const unsigned char* head,
                                              bool size_is_known);
  CODETRACE_HIDDEN unsigned char* make_room(std::uint64_t size);
  CODETRACE_HIDDEN bool check_header(std::uint64_t got);

  QString name_;
  FileLog log_;
  State state_;
};

}  // namespace CT
