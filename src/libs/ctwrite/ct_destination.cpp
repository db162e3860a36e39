// SPDX-License-Identifier: MIT
#include "ctwrite/ct_destination.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace CT::Write {

bool DescriptorDestination::write(std::span<const unsigned char> bytes) noexcept {
  constexpr std::size_t most_at_once = std::size_t{1} << 30;
  while (!bytes.empty()) {
    const ssize_t done = ::write(descriptor_, bytes.data(), std::min(bytes.size(), most_at_once));
    if (done < 0 && errno == EINTR) continue;
    if (done == 0) errno = EIO;
    if (done <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(done));
  }
  return true;
}

bool MemoryDestination::write(std::span<const unsigned char> bytes) noexcept {
  if (bytes.size() > room_.size()) {
    errno = ENOSPC;
    return false;
  }
  if (!bytes.empty()) std::memcpy(room_.data(), bytes.data(), bytes.size());
  room_ = room_.subspan(bytes.size());
  return true;
}

}  // namespace CT::Write
