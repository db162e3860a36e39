// SPDX-License-Identifier: MIT
//
// The header of a file, as it is written last: it has the sizes of both sections.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "ctwrite/ct_write_options.h"

namespace CT::Write {

inline constexpr std::size_t file_header_size = 36;
inline constexpr std::uint8_t file_version = 1;
inline constexpr std::uint8_t big_endian_flag = 0x02;

using FileHeader = std::array<unsigned char, file_header_size>;

// Requires: sizes below 4 GiB.
FileHeader encode_header(const Options& options, std::uint64_t data_size,
                         std::uint64_t add_data_size) noexcept;

}  // namespace CT::Write
