// SPDX-License-Identifier: MIT
//
// What every export says of the trace that it is of: what a viewer shows as its name, when it
// began, what is odd about it.
#pragma once

#include <cstdint>
#include <string>

#include "codetrace/render/ct_json.h"
#include "ctexport/ct_export_source.h"

namespace CT::Export {

// Such as "GET /notes?page=2"; of what was no web request the script. UTF-8, one line without
// control characters, not too long for the title of a window.
std::string request_title(const Trace& trace);

// The start of the request in nanoseconds since 1970, in decimal; empty if the trace does not tell.
std::string started_ns(const Trace& trace);

// What an export says of the trace as a whole.
struct Origin {
  std::string started_ns;        // see above
  std::uint32_t request_id = 0;  // that the tracer gave
  std::int64_t open = 0;         // nodes that never ended
  std::int64_t untimed = 0;      // nodes of which begin or end has no time
  std::int64_t moved = 0;        // nodes whose time was made to fit
  std::int64_t damaged = 0;      // places that are damaged or odd
};
Origin origin_of(const Source& source);

// The same as members of an object, with what made it and from which trace.
void write_origin(const Source& source, JsonWriter& out);

}  // namespace CT::Export
