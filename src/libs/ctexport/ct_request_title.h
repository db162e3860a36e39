// SPDX-License-Identifier: MIT
//
// What a viewer shows as the name of a request, and what every export says of the trace as a whole.
#pragma once

#include <string>

#include "codetrace/render/ct_json.h"
#include "ctexport/ct_export_source.h"

namespace CT::Export {

// Such as "GET /notes?page=2"; of what was no web request the script. UTF-8, one line without
// control characters, not too long for the title of a window.
std::string request_title(const Trace& trace);

// The start of the request in nanoseconds since 1970, in decimal; empty if the trace does not tell.
std::string started_ns(const Trace& trace);

// Members of an object: what made it, from which trace, when the request started, and how many
// nodes never ended, had no time or one that had to be moved, and how many places are damaged.
// Numbers that may be large are texts.
void write_origin(const Source& source, JsonWriter& out);

}  // namespace CT::Export
