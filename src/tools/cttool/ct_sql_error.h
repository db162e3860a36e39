// SPDX-License-Identifier: MIT
//
// What is wrong with a query, and where.
#pragma once

#include <string>
#include <string_view>

#include "ctsql/ct_script.h"

namespace CT::Tool {

// The message with line and column, the line of the query, and a mark below the place.
std::string error_text(const Sql::Error& error, std::string_view query);

}  // namespace CT::Tool
