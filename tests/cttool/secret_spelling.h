// SPDX-License-Identifier: MIT
//
// Texts in the encodings in which PHP programs hand them on.
#pragma once

#include <string>
#include <string_view>

namespace CT::Test {

std::string url_encoded(std::string_view text);   // as urlencode()
std::string json_escaped(std::string_view text);  // as json_encode(), without quotes
std::string html_escaped(std::string_view text);  // as htmlspecialchars()
std::string base64(std::string_view bytes);
std::string lines_of_76(std::string_view text);  // as chunk_split()

}  // namespace CT::Test
