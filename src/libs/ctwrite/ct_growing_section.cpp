// SPDX-License-Identifier: MIT
#include "ctwrite/ct_growing_section.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace CT::Write {

bool GrowingSection::flush() noexcept {
  if (descriptor_ < 0 || pending() == 0) return true;
  if (!write_pending()) {
    // What is half there would look like a torn record.
    const int why = errno;
    [[maybe_unused]] const int shortened =
        ::ftruncate(descriptor_, static_cast<off_t>(dropped_ + written_));
    errno = why;
    return false;
  }
  written_ = bytes_.size();
  if (kept_ == Kept::until_written) {
    dropped_ += written_;
    written_ = 0;
    bytes_.resize(0);
  }
  return true;
}

bool GrowingSection::write_pending() noexcept {
  constexpr std::size_t most_at_once = std::size_t{1} << 30;
  for (std::size_t at = written_; at != bytes_.size();) {
    const std::size_t size = std::min(bytes_.size() - at, most_at_once);
    const ssize_t done =
        ::pwrite(descriptor_, bytes_.data() + at, size, static_cast<off_t>(dropped_ + at));
    if (done < 0 && errno == EINTR) continue;
    if (done == 0) errno = EIO;
    if (done <= 0) return false;
    at += static_cast<std::size_t>(done);
  }
  return true;
}

bool GrowingSection::copy_to(Destination& destination) const noexcept {
  unsigned char piece[16384];
  for (std::uint64_t at = 0; at != dropped_;) {
    const std::uint64_t size = std::min<std::uint64_t>(sizeof piece, dropped_ - at);
    const ssize_t got = ::pread(descriptor_, piece, size, static_cast<off_t>(at));
    if (got < 0 && errno == EINTR) continue;
    if (got == 0) errno = EIO;
    if (got <= 0 || !destination.write({piece, static_cast<std::size_t>(got)})) return false;
    at += static_cast<std::uint64_t>(got);
  }
  return bytes_.size() == 0 || destination.write({bytes_.data(), bytes_.size()});
}

}  // namespace CT::Write
