// SPDX-License-Identifier: MIT
//
// Which checkpoints a mended trace is made of, but for ends, which are chosen when they are paired:
// the request begins once and ends once, and each of them is one that a reader takes.
#pragma once

#include <vector>

#include "ctsalvage/ct_names.h"
#include "ctsalvage/ct_places.h"
#include "ctsalvage/ct_salvage_report.h"

namespace CT::Salvage {

struct Selection {
  std::vector<Piece> runs;   // by place
  bool has_startup = false;  // it is the first one
};

// Tells `names` of everything that the selected ones refer to.
Selection select(const unsigned char* file, Order order, const std::vector<Piece>& pieces,
                 Names& names, Report& report);

}  // namespace CT::Salvage
