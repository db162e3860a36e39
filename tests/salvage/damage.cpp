// SPDX-License-Identifier: MIT
#include "damage.h"

#include <algorithm>
#include <array>
#include <random>

namespace CT::SalvageTest {

namespace {

// Numbers that are the same everywhere.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}
  std::uint64_t below(std::uint64_t limit) { return limit == 0 ? 0 : engine_() % limit; }
  std::uint64_t in(std::uint64_t from, std::uint64_t to) { return from + below(to - from); }
  unsigned char byte() { return static_cast<unsigned char>(engine_()); }

 private:
  std::mt19937_64 engine_;
};

struct Maker {
  Random& random;
  const Places& places;
  Octets& trace;

  [[nodiscard]] auto at(std::uint64_t offset) const {
    return trace.begin() + static_cast<std::ptrdiff_t>(offset);
  }
  // As long as it can be without being all of DATA.
  std::uint64_t hole_size() {
    constexpr std::uint64_t most = 65536;
    const std::uint64_t room = (places.data_end - places.data_begin) / 2;
    return 1 + random.below(std::min(most, room));
  }
  void fill(std::uint64_t begin, std::uint64_t end, bool is_garbage) {
    std::generate(at(begin), at(end), [&] { return is_garbage ? random.byte() : 0; });
  }
};

Damage cut(Maker make) {
  const std::uint64_t size = make.random.below(make.places.size);
  make.trace.resize(size);
  return {"cut", size, size, false, size >= make.places.data_end};
}

Damage hole(Maker make) {
  const std::uint64_t size = make.hole_size();
  const std::uint64_t begin = make.random.in(make.places.data_begin, make.places.data_end - size);
  const bool is_garbage = make.random.below(2) != 0;
  make.fill(begin, begin + size, is_garbage);
  return {is_garbage ? "hole of garbage" : "hole of zeros", begin, begin + size, true, false};
}

Damage flips(Maker make) {
  Damage damage = {"flips", make.places.size, 0, false, false};
  for (std::uint64_t left = 1 + make.random.below(8); left != 0; --left) {
    const std::uint64_t where = make.random.in(make.places.data_begin, make.places.size);
    make.trace[where] ^= static_cast<unsigned char>(1U << make.random.below(8));
    damage.begin = std::min(damage.begin, where);
  }
  return damage;
}

Damage swap(Maker make) {
  const std::uint64_t size = make.hole_size() / 2 + 1;
  const std::uint64_t room = make.places.size - make.places.data_begin - 2 * size;
  const std::uint64_t first = make.places.data_begin + make.random.below(room / 2 + 1);
  const std::uint64_t second = first + size + make.random.below(room / 2 + 1);
  std::swap_ranges(make.at(first), make.at(first + size), make.at(second));
  return {"swap", first, 0, false, false};
}

Damage doubling(Maker make) {
  const std::uint64_t size = make.hole_size();
  const std::uint64_t begin = make.random.in(make.places.data_begin, make.places.size - size);
  const Octets block(make.at(begin), make.at(begin + size));
  make.trace.insert(make.at(begin + size), block.begin(), block.end());
  return {"doubling", begin + size, 0, false, begin >= make.places.data_end};
}

Damage removal(Maker make) {
  const std::uint64_t size = make.hole_size();
  const std::uint64_t begin = make.random.in(make.places.data_begin, make.places.size - size);
  make.trace.erase(make.at(begin), make.at(begin + size));
  return {"removal", begin, 0, false, begin >= make.places.data_end};
}

Damage lost_header(Maker make) {
  const bool is_garbage = make.random.below(2) != 0;
  make.fill(0, make.places.data_begin, is_garbage);
  return {"header lost", 0, 0, false, true};
}

Damage broken_header(Maker make) {
  const std::uint64_t begin = make.random.below(make.places.data_begin);
  const std::uint64_t end = make.random.in(begin, make.places.data_begin) + 1;
  make.fill(begin, end, true);
  return {"header broken", 0, 0, false, true};
}

Damage no_header(Maker make) {
  make.trace.erase(make.trace.begin(), make.at(make.places.data_begin));
  return {"header missing", 0, 0, false, true};
}

Damage add_data_hole(Maker make) {
  const std::uint64_t begin = make.random.in(make.places.data_end, make.places.size);
  const std::uint64_t end = make.random.in(begin, make.places.size) + 1;
  make.fill(begin, end, make.random.below(2) != 0);
  return {"hole in ADD DATA", begin, 0, false, true};
}

Damage longer(Maker make) {
  for (std::uint64_t left = 1 + make.random.below(10000); left != 0; --left) {
    make.trace.push_back(make.random.byte());
  }
  return {"longer", make.places.size, 0, false, true};
}

Damage header_and_cut(Maker make) {
  lost_header(make);
  make.trace.resize(make.random.in(make.places.data_end / 2, make.places.size));
  return {"header lost, cut", 0, 0, false, false};
}

Damage many_holes(Maker make) {
  const std::uint64_t step = 64 + make.random.below(4000);
  const std::uint64_t begin = make.random.in(make.places.data_begin, make.places.data_end);
  for (std::uint64_t at = begin; at + 8 < make.places.data_end; at += step) {
    make.fill(at, at + 8, true);
  }
  return {"many holes", begin, 0, false, false};
}

constexpr std::array kinds = {cut,       hole,          flips,          swap,       doubling,
                              hole,      lost_header,   add_data_hole,  removal,    hole,
                              no_header, broken_header, header_and_cut, many_holes, longer};

}  // namespace

Damage make_damage(std::uint64_t number, const Places& places, Octets& trace) {
  constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;
  Random random(number * spread + 1);
  return kinds[number % kinds.size()]({random, places, trace});
}

}  // namespace CT::SalvageTest
