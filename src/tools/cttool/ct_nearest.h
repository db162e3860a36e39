// SPDX-License-Identifier: MIT
//
// What a user may have meant by a word that nobody knows.
#pragma once

#include <string>
#include <vector>

namespace CT::Tool {

// "; did you mean X?" for the known word that is nearest, if one is near; else nothing.
std::string guess(const std::string& word, const std::vector<std::string>& known);

}  // namespace CT::Tool
