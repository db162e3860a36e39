// SPDX-License-Identifier: MIT
//
// The values of a report's nodes: an entry for each, in blocks, the dearest first. Of most calls it
// is a few bytes (ct_call_bytes.h), of all else a line of JSON. Blocks for which there is no room
// are left out; what was left out is counted.
#pragma once

#include <cstdint>
#include <vector>

#include "ctexport/ct_export_source.h"
#include "ctreport/ct_block.h"
#include "ctreport/ct_value_order.h"

namespace CT::Report {

struct ValueBlocks {
  std::vector<Block> blocks;
  // Of each block how many entries it has; negative for one that was left out, which is not among
  // them.
  std::vector<std::int64_t> entries;
  std::int64_t left_out = 0;    // nodes
  std::int64_t longest_ns = 0;  // the greatest total time among those
};

// `room`: bytes that the blocks may have in the page.
ValueBlocks value_blocks(const Export::Source& source, const ValueOrder& order, std::uint64_t room);

}  // namespace CT::Report
