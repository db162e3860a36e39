// SPDX-License-Identifier: MIT
//
// Where own time went, by areas of a program: PHP's own functions, and those of scripts by folders
// or by namespaces, split where it says most. The largest part is split into what lies directly in
// it and what lies below, again and again, until there are enough parts; of folders and namespaces
// those are taken that part the time more evenly.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT {

struct Area {
  std::string name;  // UTF-8; a folder or a namespace ends in "/..." or "\..." if more lies below
  std::int64_t own_ns = 0;
  std::int64_t calls = 0;
};

struct Areas {
  enum class By : std::uint8_t { folder, namespace_ };
  By by = By::folder;
  std::vector<Area> user;  // functions that scripts define, most time first
  Area builtin;
  Area includes;  // files that were included: compiled, and run outside of functions
  Area writes;    // output
  Area request;   // PHP itself, outside of everything else
};

// At most `parts` user areas. The own times of all areas add up to the request's total time.
Areas areas(const Trace& trace, const Measures& measures, std::size_t parts);

// One path with what is in it, for split_paths.
struct PathTime {
  std::string path;
  std::int64_t own_ns;
  std::int64_t calls;
};

// The split itself, most time first.
std::vector<Area> split_paths(std::vector<PathTime> paths, char separator, std::size_t parts);

}  // namespace CT
