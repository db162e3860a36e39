// SPDX-License-Identifier: MIT
//
// Readers of a report's data, made from the description of its blocks.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace CT::Test {

// What is in a zlib stream, which must be whole and have nothing behind it.
std::string unpacked(std::string_view packed);

// Numbers in LEB128.
std::vector<std::uint64_t> varints(std::string_view bytes);
// The same in zigzag.
std::vector<std::int64_t> signed_numbers(std::string_view bytes);
// Numbers of which the bytes have the differences.
std::vector<std::uint64_t> sums(std::string_view bytes);

// The block of this name out of a page, unpacked; throws if it is not there once.
std::string block_of(std::string_view page, std::string_view name);

}  // namespace CT::Test
