// SPDX-License-Identifier: MIT
//
// Working memory for the lines of the text output, reused from node to node.
#pragma once

#include "codetrace/render/ct_rendered.h"
#include "codetrace/render/ct_value_text.h"
#include "kcommon/k_export.h"

namespace CT::Node {

struct CODETRACE_EXPORT TextRoom {
  Checkpoint::ValueTextWriter values;
  RenderedTexts call_heads;  // by function: its name, up to the bracket
};

}  // namespace CT::Node
