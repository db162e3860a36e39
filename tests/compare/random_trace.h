// SPDX-License-Identifier: MIT
//
// random_trace: the bytes of one random trace file. In a third of them the
// checkpoints fit together, in a third they do not, and a third are damaged; most have 1 to 60
// checkpoints. A number and a seed always give the same trace.
#pragma once

#include <cstdint>
#include <string>

namespace CT::Test {

// Without `short_inline_texts`, none has what short_inline_text.h describes.
std::string random_trace(std::uint64_t seed, std::uint64_t number, bool short_inline_texts);

}  // namespace CT::Test
