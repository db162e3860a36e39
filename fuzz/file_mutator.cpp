// SPDX-License-Identifier: MIT
#include "mutate_trace.h"

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                    unsigned seed) {
  return CT::Fuzz::mutate_trace(data, size, max_size, seed);
}
