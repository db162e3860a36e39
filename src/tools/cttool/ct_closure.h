// SPDX-License-Identifier: MIT
//
// Closures for people: all of a namespace or a class have one name, and only their places tell them
// apart.
#pragma once

#include <cstdint>
#include <string>

namespace CT::Tool {

// Where a closure is defined, as "autoload.php:6", by the name and the place of a function. Empty
// for a function with any other name, and where the file is not known.
std::string closure_place(const std::string& name, const std::string& file, std::uint32_t line);

// The name of a method without the namespace that PHP repeats in front of "{closure}".
std::string closure_name(const std::string& name);

}  // namespace CT::Tool
