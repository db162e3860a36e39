// SPDX-License-Identifier: MIT
//
// RenderedTexts: what many lines show alike, such as the name of a function, written out once and
// copied from then on. It forgets when it is full, so it holds no more than a fixed amount,
// whatever the trace; long texts are not kept at all.
#pragma once

#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <vector>

#include "codetrace/ct_file.h"
#include "codetrace/render/ct_writer.h"

namespace CT {

class RenderedTexts {
 public:
  // The longest stored text that is worth keeping.
  static constexpr std::size_t longest = 256;

  // Puts what `render(writer)` writes, which is always the same for this key: the address of what
  // is rendered. `fits()` tells, for a key that is not known, whether its text is short enough to
  // be kept: a few times `longest`. Requires: a key that is not null.
  template <class Fits, class Render>
  void put(const void* key, Writer& out, Fits fits, Render render) {
    assert(key != nullptr);
    if (slots_.empty()) forget();
    Slot& slot = slots_[slot_of(key)];
    if (slot.key != key) {
      if (!fits()) return render(out);
      if (pool_.size() > most) forget();
      const std::size_t begin = pool_.size();
      render(static_cast<Writer&>(pool_));
      slot = {key, static_cast<std::uint32_t>(begin),
              static_cast<std::uint32_t>(pool_.size() - begin)};
    }
    out.put(pool_.view().substr(slot.begin, slot.size));
  }

  // Whether the text at a place of ADD DATA is short; null is.
  static bool is_short(const Section& section, const unsigned char* place) {
    if (place == nullptr) return true;
    const auto room = static_cast<std::size_t>(section.end() - place);
    return room <= longest || std::memchr(place, 0, longest) != nullptr;
  }

 private:
  struct Slot {
    const void* key = nullptr;
    std::uint32_t begin = 0;
    std::uint32_t size = 0;
  };

  static constexpr std::size_t most = std::size_t{1} << 20;
  static constexpr unsigned slot_bits = 13;

  static std::size_t slot_of(const void* key) {
    // Neighbours in memory are neighbours here, so that few lines of the cache are in use.
    constexpr unsigned object_bits = 5;
    const auto place = std::bit_cast<std::uintptr_t>(key) >> object_bits;
    return (place ^ place >> slot_bits) & ((std::size_t{1} << slot_bits) - 1);
  }
  void forget() {
    slots_.assign(std::size_t{1} << slot_bits, Slot());
    pool_.clear();
  }

  std::vector<Slot> slots_;  // none before the first key
  MemoryWriter pool_;
};

}  // namespace CT
