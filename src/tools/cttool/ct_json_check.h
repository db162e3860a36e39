// SPDX-License-Identifier: MIT
//
// Whether a text is JSON: one value and nothing else. Bytes inside of strings may be any but
// controls. It takes linear time and a bit a level, however deep the value is.
#pragma once

#include <string_view>

namespace CT::Tool {

bool is_json(std::string_view text);

}  // namespace CT::Tool
