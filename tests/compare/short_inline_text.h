// SPDX-License-Identifier: MIT
//
// The one constellation of bytes that versions of the tool read differently on purpose: an inline
// text (status line of SAPI_SEND_HEADERS, message of SCRIPT_ERROR) whose NUL comes within the
// payload although its length says more than the payload holds. Older versions take the text for
// absent, newer ones show it up to its NUL. Traces that compare versions must do without it.
#pragma once

#include <cstdint>
#include <string_view>

namespace CT::Test {

// Whether any checkpoint of the file has such a text, wherever damage may have put it.
bool has_short_inline_text(std::string_view file);

// Whether these bytes, up to the end of their payload, are one.
bool is_short_inline_text(std::uint64_t declared, std::string_view bytes);

}  // namespace CT::Test
