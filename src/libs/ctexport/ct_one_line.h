// SPDX-License-Identifier: MIT
//
// Stored text for formats of lines, which have no way to escape: whatever would end a line, for
// whichever reader, is shown as \n or \x1b, and what is not UTF-8 as U+FFFD.
#pragma once

#include <cstddef>
#include <string_view>

#include "codetrace/render/ct_writer.h"

namespace CT::Export {

// Control characters, also those beyond ASCII, and the line and paragraph separators of Unicode.
void put_one_line(Writer& out, std::string_view stored);

// The same; a semicolon, which stands between frames, becomes a colon.
void put_one_frame(Writer& out, std::string_view stored);

// The largest number of bytes up to `most` after which no character is cut in two.
std::size_t whole_characters(std::string_view text, std::size_t most);

}  // namespace CT::Export
