// SPDX-License-Identifier: MIT
//
// Whether a file is a whole trace: one of which the reader drops nothing, has nothing to say but
// that calls lost their ends, and finds whatever checkpoints refer to.
#pragma once

#include "ctsalvage/ct_layout.h"

namespace CT::Salvage {

// Counts its checkpoints, if it is.
bool is_whole(Bytes file, std::uint64_t& checkpoints);

}  // namespace CT::Salvage
