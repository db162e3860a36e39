// SPDX-License-Identifier: MIT
//
// How libFuzzer mutates whole traces: by a few moves that keep the file's sizes true, and now and
// then without regard to anything.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t max_size, unsigned seed);

namespace CT::Fuzz {

// In place; returns the new size.
std::size_t mutate_trace(std::uint8_t* data, std::size_t size, std::size_t max_size, unsigned seed);

}  // namespace CT::Fuzz
