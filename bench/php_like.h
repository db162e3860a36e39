// SPDX-License-Identifier: MIT
//
// Traces as PHP programs leave them: calls five to forty deep of some two thousand functions and
// three hundred classes, every checkpoint with time, memory and place, arguments of all kinds. The
// same number of calls gives the same bytes on every machine.
#pragma once

#include <cstddef>

#include "trace_builder.h"

namespace CT::Bench {

// A request with `calls` calls, all of which return; with none, it starts up and shuts down.
void add_php_like_request(std::size_t calls, Test::TraceBuilder& trace);

}  // namespace CT::Bench
