// SPDX-License-Identifier: MIT
//
// Where header and sections are in a file whose length may be wrong: the sections as far as they
// are there. What the header says otherwise is believed.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "codetrace/ct_file.h"
#include "ctcheck/ct_defect_list.h"

namespace CT::Check {

struct FileLayout {
  FileHeader header;
  // Borrow: the bytes. Of a file that is too short they are what is there of them.
  Section data;
  Section add_data;
  std::uint64_t file_size = 0;

  [[nodiscard]] bool big_endian() const {
    return (header.flags & FileHeader::big_endian_flag) != 0;
  }
  [[nodiscard]] std::uint64_t expected_size() const {
    return FileHeader::disk_size + std::uint64_t{header.data_size} + header.add_data_size;
  }
  [[nodiscard]] std::uint64_t add_data_at() const {
    return FileHeader::disk_size + std::uint64_t{header.data_size};
  }
  // Whether the file ends before DATA does, or before ADD DATA does.
  [[nodiscard]] bool is_data_cut() const { return data.size() < header.data_size; }
  [[nodiscard]] bool is_add_data_cut() const { return add_data.size() < header.add_data_size; }
};

// Reports what is wrong with the header; nothing if it tells of no sections that could be looked
// at. Does not report a length that is wrong, which costs what only the walk over DATA knows.
std::optional<FileLayout> find_layout(std::span<const unsigned char> bytes, DefectList& defects);

// Reports a length that is wrong. `checkpoints`: that are there.
void report_size(const FileLayout& layout, std::uint64_t checkpoints, DefectList& defects);

}  // namespace CT::Check
