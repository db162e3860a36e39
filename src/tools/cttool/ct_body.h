// SPDX-License-Identifier: MIT
//
// The body of a response, which lies in the trace in pieces: put together in the forms that people
// and programs read, a block at a time. Characters may lie across pieces.
#pragma once

#include <functional>
#include <string_view>

#include "codetrace/render/ct_writer.h"
#include "ctmeasure/ct_response.h"
#include "tools/cttool/ct_style.h"

namespace CT::Tool {

// Calls `take` with the body, some ten thousand bytes at a time and never within a character that
// is whole; and `gap` behind a write that the tracer cut. Ends when `take` returns false.
void for_each_block(const Response& response,
                    const std::function<bool(std::string_view block)>& take,
                    const std::function<void(const BodyPart& write)>& gap = {});

// Whether it is UTF-8 without a byte-order mark, so that the JSON text is the body, exactly.
bool is_exact_as_text(const Response& response);

// For people: control characters but line feeds and tabs are shown as \x1b and so on; a line in
// brackets stands where the tracer cut something. False if it does not end with a line feed.
bool put_body(const Response& response, const Style& style, Writer& out);
// As a JSON string, with U+FFFD for what is not UTF-8; in base64; and byte for byte.
void put_body_json(const Response& response, Writer& out);
void put_body_base64(const Response& response, Writer& out);
void put_body_bytes(const Response& response, Writer& out);

}  // namespace CT::Tool
