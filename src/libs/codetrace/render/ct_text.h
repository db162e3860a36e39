// SPDX-License-Identifier: MIT
//
// Stored text as the outputs show it: decoded as ct_utf8.h says, straight to UTF-8 again.
#pragma once

#include <string_view>

#include "codetrace/render/ct_writer.h"

namespace CT {

void put_text(Writer& out, std::string_view stored);

// With a backslash before quotes of both kinds and \t \n \r for these three controls.
// Kept: the backslash itself passes unescaped, so the form cannot be undone; it is for reading.
void put_escaped_text(Writer& out, std::string_view stored);

// The inside of a JSON string, escaped as QJsonDocument does: \" \\ \b \f \n \r \t and \u00XX for
// the other controls; everything else passes as UTF-8.
void put_json_text(Writer& out, std::string_view stored);

}  // namespace CT
