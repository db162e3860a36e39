// SPDX-License-Identifier: MIT
//
// The library as programs use it: a trace, and what a program does with it.
#include "api_world.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CT::Fuzz::silence_log();
  const CT::Fuzz::ApiInput input(data, size);
  CT::Fuzz::World(input.trace, input.moves).run();
  return 0;
}
