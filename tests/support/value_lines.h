// SPDX-License-Identifier: MIT
//
// A reader of the values of a report, made from the description of their bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CT::Test {

// The line of JSON that each entry of a block of values stands for. `classes` is the block of that
// name. Throws where an entry is not as it is described.
std::vector<std::string> value_lines(std::string_view block, std::string_view classes);

}  // namespace CT::Test
