// SPDX-License-Identifier: MIT
//
// Who wrote these bytes: a text in the body of a response, also where it lies across several
// writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "ctmeasure/ct_response.h"

namespace CT::Tool {

struct BodyMatch {
  std::uint64_t offset;  // in the body as it was recorded
  std::size_t first;     // the writes that it lies in, as places in Response::writes()
  std::size_t last;
};

struct BodyMatches {
  std::vector<BodyMatch> found;  // the first ones, `limit` at most
  std::uint64_t count = 0;       // of all
};

// From left to right, none inside of another. Nothing is found across bytes that the tracer cut
// off, and nothing for an empty text. Linear in both sizes; no copy of the body is made. A `limit`
// of 0 is none.
BodyMatches find_in_body(const Response& response, std::string_view text, std::size_t limit);

}  // namespace CT::Tool
