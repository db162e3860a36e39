// SPDX-License-Identifier: MIT
//
// Many files checked at once, on all cores, handed out one after the other in the order of their
// names. Of files that are ahead of their turn only what was found is kept, and of so many at most
// that memory stays within bounds however many there are.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ctcheck/ct_check.h"

namespace CT::Tool {

struct CheckedFile {
  std::string name;
  std::string failure;  // why it could not be read; empty if it could
  Check::Result result;
};

// `take` gets each file, in order and on the caller's thread; once it returns false no more of them
// are read. `max_size`: as in Session.
void check_files(const std::vector<std::string>& names, std::uint64_t max_size, std::size_t limit,
                 const std::function<bool(const CheckedFile&)>& take);

}  // namespace CT::Tool
