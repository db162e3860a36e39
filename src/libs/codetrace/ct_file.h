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
#include <cstdint>
#include <cstdlib>
#include <memory>

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

class CODETRACE_EXPORT File {
 public:
  explicit File(QString name) : name_(std::move(name)) {}

  // Reads and checks the file of this name, which may be a pipe. False, with error_message(), if it
  // cannot be read or is not a whole trace. Opening again starts afresh.
  bool open();

  // The same for bytes in memory, which are copied.
  bool open(const unsigned char* bytes, std::size_t size);

  // True only after a successful open.
  [[nodiscard]] bool is_open() const { return open_; }
  // Why the last open failed.
  [[nodiscard]] const QString& error_message() const { return error_; }
  [[nodiscard]] const QString& name() const { return name_; }

  // Set from the moment that 36 bytes could be read, valid or not.
  [[nodiscard]] const FileHeader& header() const { return header_; }
  // The byte order of everything in both sections (not of the header).
  [[nodiscard]] bool big_endian() const {
    return (header_.flags & FileHeader::big_endian_flag) != 0;
  }
  [[nodiscard]] const Section& data() const { return data_; }
  [[nodiscard]] const Section& add_data() const { return add_data_; }

  // True when `path` is the very file that was opened from disk, by whatever name or link.
  [[nodiscard]] bool is_same_file(const QString& path) const;

 private:
  class Source;
  class DiskSource;
  class MemorySource;

  void reset();
  bool fail(QString message);
  bool load(Source& source);
  void decode_header(const unsigned char* bytes);
  [[nodiscard]] bool is_trace() const;
  [[nodiscard]] std::uint64_t expected_size() const;
  std::int64_t read_sections(Source& source, const unsigned char* head, bool size_is_known);
  bool check_header(std::uint64_t got);

  struct Free {
    void operator()(unsigned char* bytes) const { std::free(bytes); }
  };

  QString name_;
  bool open_ = false;
  QString error_;
  std::unique_ptr<unsigned char, Free> content_;
  FileHeader header_;
  Section data_;
  Section add_data_;
  std::uint64_t device_ = 0;  // identity on disk; inode 0 for none
  std::uint64_t inode_ = 0;
};

}  // namespace CT
