// SPDX-License-Identifier: MIT
//
// The line of a user event. Its name and number are put into a text with two markers, %1 and %2,
// one after the other, so markers in the name take part: of all that are there once the name is in,
// the lowest is replaced by the number wherever it stands.
// Kept: that is what QString::arg does, and readers of the text rely on it. A marker is a percent
// sign, an L if the number shall have the manner of the locale, and one or two digits.
#pragma once

#include <cstdint>

#include "codetrace/model/ct_string.h"
#include "codetrace/render/ct_writer.h"

namespace CT {

// Streams the name: memory does not grow with it.
void put_event_line(Writer& out, const Checkpoint::String& name, std::uint32_t sequence);

}  // namespace CT
