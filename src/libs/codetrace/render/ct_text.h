// SPDX-License-Identifier: MIT
//
// Stored text as the outputs show it. Texts in a trace are meant to be UTF-8, but nobody vouches
// for that, so they are decoded by the rules of QString::fromUtf8, straight to UTF-8 again: one
// leading byte-order mark is dropped, well-formed sequences pass, and each byte that is part of
// none becomes one U+FFFD.
#pragma once

#include <QString>
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

// True when the decoded text is exactly `expected`, which is ASCII.
bool decodes_to(std::string_view stored, std::string_view expected);

// Takes the first character off a stored text that is not empty and has no leading byte-order mark,
// and returns it decoded.
std::string_view take_character(std::string_view& stored);

std::string_view without_byte_order_mark(std::string_view stored);

// Decoded text (which may begin with U+FEFF) as a QString, nothing dropped.
QString to_qstring(std::string_view decoded);

}  // namespace CT
