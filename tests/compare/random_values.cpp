// SPDX-License-Identifier: MIT
#include "random_values.h"

#include <algorithm>
#include <array>
#include <limits>

namespace CT::Test {

Fields RandomValues::any() {
  switch (random_.below(16)) {
    case 0: return cut_array();
    case 1: return twin_keys();
    case 2: return random_.one_in(4) ? lying_array() : small();
    case 3: return object();
    case 4: {
      const Fields leaf = small();
      return value::nest(random_.below(random_.one_in(8) ? 400 : 12), leaf);
    }
    case 5:
    case 6: return random_.value(1 + random_.below(3), random_.one_in(2), names_);
    case 7: return value::string(random_.bytes(12));
    default: return small();
  }
}

std::vector<Fields> RandomValues::several(std::size_t most) {
  std::vector<Fields> values;
  for (std::size_t left = random_.below(most + 1); left != 0; --left) values.push_back(any());
  return values;
}

Fields RandomValues::small() { return random_.value(0, false, names_); }

Fields RandomValues::object() {
  const Ref class_entry = names_.classes[random_.below(names_.classes.size())];
  return value::object(class_entry, static_cast<std::uint32_t>(random_.below(20)));
}

Fields RandomValues::cut_string() {
  static constexpr std::array<std::uint32_t, 6> sizes = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFF, 100};
  const std::string text = random_.bytes(random_.one_in(10) ? 100 : 8);
  const auto size = static_cast<std::uint32_t>(text.size());
  switch (random_.below(10)) {
    case 0: return Fields().cut_string(text, sizes[random_.below(sizes.size())]);
    // Around the length that is stored: one less, the same, more.
    case 1: return Fields().cut_string(text, size + static_cast<std::uint32_t>(random_.below(4)));
    case 2: return Fields().cut_string(text, std::max(size, 1U) - 1);
    case 3: return Fields().u32(size + static_cast<std::uint32_t>(random_.below(3))).raw(text);
    case 4:
      return random_.one_in(4) ? Fields().u32(0x80000001).u32(0xFFFFFFFF).raw(text)
                               : Fields().cut_string({});
    default: return Fields().cut_string(text);
  }
}

// The marker as the first, a middle or the last key, as an element, or as both.
Fields RandomValues::cut_array() {
  const std::size_t count = 1 + random_.below(5);
  const std::size_t marked = random_.below(count);
  const std::size_t kind = random_.below(6);
  const bool list = random_.one_in(2);
  std::vector<value::Pair> pairs;
  for (std::size_t i = 0; i != count; ++i) {
    Fields key = list ? value::integer(static_cast<std::int64_t>(i)) : small();
    Fields element = small();
    if (i == marked) {
      if (kind == 0 || kind >= 3) key = value::cut_marker();
      if (kind == 1 || kind == 3) element = value::cut_marker();
      if (kind == 2) element = value::string("\xEF\xBB\xBF**CUT**");
      if (kind == 4) key = value::cut_string("**CUT**", 7 + static_cast<std::uint32_t>(i));
      if (kind == 5) key = value::string(random_.one_in(2) ? "**CUT**x" : "**CUT*");
    }
    pairs.emplace_back(key, element);
  }
  return value::map(pairs);
}

// Keys of different types or bytes that are the same text, or nearly.
Fields RandomValues::twin_keys() {
  constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
  const auto handle = static_cast<std::uint32_t>(random_.below(2));
  const std::size_t known = names_.resources.size();
  const std::array<Fields, 20> keys = {
      value::integer(1),
      value::real(1.0),
      value::real(1.0000001),
      value::string("1"),
      value::string("\xEF\xBB\xBF\x31"),
      value::real(-0.0),
      value::integer(0),
      value::real(0.0),
      value::boolean(true),
      value::null(),
      value::undef(),
      value::code(200),
      object(),
      value::object(0, handle),
      value::resource(names_.resources[random_.below(known)], handle),
      value::resource(names_.resources[random_.below(known)], handle),
      value::list({value::integer(1)}),
      value::map({{value::integer(1), value::real(1.0)}}),
      value::integer(lowest),
      value::real(static_cast<double>(lowest)),
  };
  std::vector<value::Pair> pairs;
  for (std::size_t left = 2 + random_.below(8); left != 0; --left) {
    const Fields& key = keys[random_.below(keys.size())];
    pairs.emplace_back(key, small());
  }
  return value::map(pairs);
}

Fields RandomValues::lying_array() {
  static constexpr std::array<std::int32_t, 6> counts = {0,
                                                         -1,
                                                         1000,
                                                         std::numeric_limits<std::int32_t>::max(),
                                                         std::numeric_limits<std::int32_t>::min(),
                                                         3};
  const Fields key = small();
  const Fields element = small();
  return value::map(counts[random_.below(counts.size())], {{key, element}});
}

}  // namespace CT::Test
