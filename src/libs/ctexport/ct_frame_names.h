// SPDX-License-Identifier: MIT
//
// The names of frames in one form, written out once and copied from then on. It forgets when it is
// full, so it holds no more than a fixed amount, whatever the trace; long names are not kept.
#pragma once

#include <cstdint>
#include <vector>

#include "ctexport/ct_frames.h"

namespace CT::Export {

class FrameNames {
 public:
  // Borrows: the frames.
  FrameNames(const Frames& frames, PutStored form) : frames_(frames), put_(form) {}

  // Of the frame of this number.
  void put(std::int32_t number, Writer& out) {
    const auto at = static_cast<std::size_t>(number);
    if (at < slots_.size() && slots_[at].size != 0) {
      return out.put(texts_.view().substr(slots_[at].begin, slots_[at].size));
    }
    put_unknown(number, out);
  }

 private:
  struct Slot {
    std::uint32_t begin = 0;
    std::uint32_t size = 0;  // 0: it is not kept
  };
  void put_unknown(std::int32_t number, Writer& out);

  const Frames& frames_;
  PutStored put_;
  MemoryWriter texts_;
  std::vector<Slot> slots_;
};

}  // namespace CT::Export
