// SPDX-License-Identifier: MIT
//
// Either the trace or the moves.
#include <algorithm>
#include <cstring>
#include <string>

#include "api_world.h"
#include "mutate_trace.h"

namespace {

using CT::Fuzz::ApiInput;

// Gives `mutate` room for so many bytes.
template <class Mutate>
void change(std::string& bytes, std::size_t max_size, Mutate mutate) {
  const std::size_t size = bytes.size();
  bytes.resize(std::max(size, max_size));
  void* const place = bytes.data();
  bytes.resize(mutate(static_cast<std::uint8_t*>(place), size, bytes.size()));
}

}  // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                    unsigned seed) {
  constexpr std::size_t most_moves = 250;
  if (size < ApiInput::header_size) return LLVMFuzzerMutate(data, size, max_size);
  const ApiInput input(data, size);
  std::string trace(input.trace);
  std::string moves(input.moves);
  const std::size_t room = max_size - ApiInput::header_size;
  if (seed % 2 == 0 && room > trace.size()) {
    change(moves, std::min(most_moves, room - trace.size()), LLVMFuzzerMutate);
  } else if (room > moves.size()) {
    change(trace, room - moves.size(), [&](std::uint8_t* bytes, std::size_t was, std::size_t most) {
      return CT::Fuzz::mutate_trace(bytes, was, most, seed / 2);
    });
  }
  const std::string bytes = static_cast<char>(moves.size() & 0xFF) +
                            std::string(1, static_cast<char>(moves.size() >> 8)) + trace + moves;
  std::memcpy(data, bytes.data(), bytes.size());
  return bytes.size();
}
