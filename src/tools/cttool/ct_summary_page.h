// SPDX-License-Identifier: MIT
//
// Sections on one page of so many lines of so many columns: those that have more lines than they
// need give way, the longest first, and say how to see the rest.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/cttool/ct_style.h"
#include "tools/cttool/ct_summary_section.h"

namespace CT::Tool {

// Sections without lines are left out.
std::string page_of(std::vector<SectionText> sections, std::size_t lines, std::size_t columns,
                    const Style& style = Style());

}  // namespace CT::Tool
