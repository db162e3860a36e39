// SPDX-License-Identifier: MIT
#include "mutate_trace.h"

#include <algorithm>
#include <cstring>

#include "codetrace/ct_file.h"
#include "support.h"
#include "trace_moves.h"

namespace CT::Fuzz {

namespace {

void mutate_bytes(std::string& bytes, std::size_t max_size) {
  if (max_size == 0) return;
  const std::size_t size = bytes.size();
  bytes.resize(std::max(size, max_size));
  void* const place = bytes.data();
  bytes.resize(LLVMFuzzerMutate(static_cast<std::uint8_t*>(place), size, bytes.size()));
}

}  // namespace

std::size_t mutate_trace(std::uint8_t* data, std::size_t size, std::size_t max_size,
                         unsigned seed) {
  constexpr unsigned one_in = 20;
  if (size < FileHeader::disk_size || seed % one_in == 0) {
    return LLVMFuzzerMutate(data, size, max_size);
  }
  TraceMoves trace(as_text(data, size), seed, mutate_bytes);
  for (unsigned moves = 1 + seed / one_in % 3; moves != 0; --moves) trace.move(max_size);
  const std::string bytes = trace.bytes();
  if (bytes.size() > max_size) return LLVMFuzzerMutate(data, size, max_size);
  std::memcpy(data, bytes.data(), bytes.size());
  return bytes.size();
}

}  // namespace CT::Fuzz
