// SPDX-License-Identifier: MIT
//
// How libFuzzer mutates whole traces: by a few moves that keep the file's sizes true, and now and
// then without regard to anything.
#include <algorithm>
#include <cstring>

#include "codetrace/ct_file.h"
#include "support.h"
#include "trace_moves.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t max_size, unsigned seed);

namespace {

void mutate_bytes(std::string& bytes, std::size_t max_size) {
  if (max_size == 0) return;
  const std::size_t size = bytes.size();
  bytes.resize(std::max(size, max_size));
  void* const place = bytes.data();
  bytes.resize(LLVMFuzzerMutate(static_cast<std::uint8_t*>(place), size, bytes.size()));
}

}  // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                    unsigned seed) {
  constexpr unsigned one_in = 20;
  if (size < CT::FileHeader::disk_size || seed % one_in == 0) {
    return LLVMFuzzerMutate(data, size, max_size);
  }
  CT::Fuzz::TraceMoves trace(CT::Fuzz::as_text(data, size), seed, mutate_bytes);
  for (unsigned moves = 1 + seed / one_in % 3; moves != 0; --moves) trace.move(max_size);
  const std::string bytes = trace.bytes();
  if (bytes.size() > max_size) return LLVMFuzzerMutate(data, size, max_size);
  std::memcpy(data, bytes.data(), bytes.size());
  return bytes.size();
}
