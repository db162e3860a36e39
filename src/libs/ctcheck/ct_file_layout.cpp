// SPDX-License-Identifier: MIT
#include "ctcheck/ct_file_layout.h"

#include <algorithm>

namespace CT::Check {

namespace {

FileHeader decode(const unsigned char* bytes) {
  Cursor cursor(bytes, bytes + FileHeader::disk_size, true);
  FileHeader header;
  header.magic[0] = static_cast<char>(cursor.u8());
  header.magic[1] = static_cast<char>(cursor.u8());
  header.version = cursor.u8();
  header.flags = cursor.u8();
  header.request_id = cursor.u32();
  header.php_api_version = cursor.u32();
  header.data_size = cursor.u32();
  header.add_data_size = cursor.u32();
  header.orig_data = cursor.u64();
  header.orig_add_data = cursor.u64();
  return header;
}

// Where fields of the header lie.
constexpr std::uint64_t version_at = 2;
constexpr std::uint64_t flags_at = 3;
constexpr std::uint64_t data_size_at = 12;
constexpr std::uint64_t orig_data_at = 20;

bool wraps(std::uint64_t begin, std::uint64_t size) {
  return size != 0 && begin + size - 1 < begin;
}

// Whether two ranges that do not wrap have a byte in common.
bool meet(std::uint64_t a, std::uint64_t a_size, std::uint64_t b, std::uint64_t b_size) {
  return a <= b ? b - a < a_size && b_size != 0 : a - b < b_size && a_size != 0;
}

void check_origins(const FileHeader& header, DefectList& defects) {
  const bool is_beyond = wraps(header.orig_data, header.data_size) ||
                         wraps(header.orig_add_data, header.add_data_size);
  if (!is_beyond &&
      !meet(header.orig_data, header.data_size, header.orig_add_data, header.add_data_size)) {
    return;
  }
  defects.add(Code::origin, {Part::file, orig_data_at}, [&] {
    return Words{is_beyond ? "a section lay beyond the last address there is"
                           : "the sections lay at the same addresses"};
  });
}

// Whether it is a header of this format.
bool check_marks(const FileHeader& header, DefectList& defects) {
  const bool has_magic = header.magic[0] == 'C' && header.magic[1] == 'T';
  if (!has_magic) {
    defects.add(Code::magic, {}, [] { return Words{"the file does not begin with CT"}; });
  }
  if (header.version != 1) {
    defects.add(Code::version, {Part::file, version_at}, [&] {
      return Words{"the version is " + std::to_string(header.version) + ", not 1"};
    });
  }
  return has_magic && header.version == 1;
}

}  // namespace

std::optional<FileLayout> find_layout(std::span<const unsigned char> bytes, DefectList& defects) {
  if (bytes.size() < FileHeader::disk_size) {
    defects.add(Code::header, {}, [&] {
      return Words{"the file has " + counted(bytes.size(), "byte") + ", and a header has 36"};
    });
    return std::nullopt;
  }
  FileLayout layout;
  layout.header = decode(bytes.data());
  layout.file_size = bytes.size();
  // What has neither the marks nor the length of a trace is none.
  const bool is_marked = check_marks(layout.header, defects);
  if (!is_marked && layout.expected_size() != bytes.size()) return std::nullopt;
  const unsigned flags = layout.header.flags & ~unsigned{FileHeader::big_endian_flag};
  if (flags != 0) {
    defects.add(Code::flags, {Part::file, flags_at}, [&] {
      return Words{"bits of the flags that mean nothing are set: " + std::to_string(flags)};
    });
  }
  check_origins(layout.header, defects);
  const auto rest = bytes.subspan(FileHeader::disk_size);
  const auto data = rest.first(std::min<std::size_t>(rest.size(), layout.header.data_size));
  const auto behind = rest.subspan(data.size());
  const auto add_data =
      behind.first(std::min<std::size_t>(behind.size(), layout.header.add_data_size));
  layout.data = Section(data.data(), data.size(), layout.header.orig_data);
  layout.add_data = Section(add_data.data(), add_data.size(), layout.header.orig_add_data);
  return layout;
}

void report_size(const FileLayout& layout, std::uint64_t checkpoints, DefectList& defects) {
  const std::uint64_t expected = layout.expected_size();
  if (layout.file_size == expected) return;
  defects.add(Code::size, {Part::file, data_size_at}, [&] {
    Words words;
    words.what = "the file has " + counted(layout.file_size, "byte");
    words.what.append(", by its header it has ").append(counted(expected, "byte"));
    words.cost = code_info(Code::size).cost;
    words.cost.append("; ").append(counted(checkpoints, "whole checkpoint"));
    words.cost.append(checkpoints == 1 ? " is" : " are").append(" there");
    if (layout.is_data_cut()) {
      words.cost.append(", ");
      words.cost.append(counted(layout.header.data_size - layout.data.size(), "byte"));
      words.cost.append(" of DATA and all of ADD DATA are missing");
    } else if (layout.is_add_data_cut()) {
      words.cost.append(", ");
      words.cost.append(counted(layout.header.add_data_size - layout.add_data.size(), "byte"));
      words.cost.append(" of ADD DATA are missing");
    }
    return words;
  });
}

}  // namespace CT::Check
