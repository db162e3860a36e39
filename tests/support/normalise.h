// SPDX-License-Identifier: MIT
//
// AddressNames: gives the addresses in a program's output names that are the same in every run.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace CT::Test {

class AddressNames {
 public:
  // Replaces each `0x` with six hex digits or more by 0xA1, 0xA2, ... in order of appearance, and
  // the line number in `.cpp:123)` by N. One address keeps its name over several calls.
  std::string normalise(std::string_view text);

 private:
  std::map<std::string, std::string, std::less<>> names_;
};

}  // namespace CT::Test
