// SPDX-License-Identifier: MIT
//
// Sections on one page: those that have more lines than they need give way, the longest first, and
// say how to see the rest.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/cttool/ct_style.h"
#include "tools/cttool/ct_summary_section.h"

namespace CT::Tool {

// Sections without lines are left out.
std::string page_of(std::vector<SectionText> sections, const PageSize& page,
                    const Style& style = Style());

}  // namespace CT::Tool
