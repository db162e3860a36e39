// SPDX-License-Identifier: MIT
//
// The types of PHP values: one table that says of each how it is stored and what it is in JSON.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace CT::Checkpoint {

// The codes of the file, which are the PHP engine's own.
enum class ValueType : std::uint8_t {
  undef,
  null,
  false_,
  true_,
  long_,
  double_,
  string,
  array,
  object,
  resource
};

struct ValueTypeInfo {
  // In place of a size that varies: more than there ever is.
  static constexpr std::size_t varying = std::numeric_limits<std::size_t>::max();

  ValueType type;
  std::size_t body_size;   // bytes behind the code
  bool is_object_in_json;  // always
};

inline constexpr std::array value_types = {
    ValueTypeInfo{ValueType::undef, 0, false},
    ValueTypeInfo{ValueType::null, 0, false},
    ValueTypeInfo{ValueType::false_, 0, false},
    ValueTypeInfo{ValueType::true_, 0, false},
    ValueTypeInfo{ValueType::long_, 8, false},
    ValueTypeInfo{ValueType::double_, 8, false},
    ValueTypeInfo{ValueType::string, ValueTypeInfo::varying, false},
    ValueTypeInfo{ValueType::array, ValueTypeInfo::varying, true},
    ValueTypeInfo{ValueType::object, 12, true},
    ValueTypeInfo{ValueType::resource, 16, true},
};

static_assert(
    [] {
      for (std::size_t code = 0; code != value_types.size(); ++code) {
        if (value_types[code].type != static_cast<ValueType>(code)) return false;
      }
      return value_types.back().type == ValueType::resource;
    }(),
    "a row for each, in the order of the codes");

// The type of a code in a file. Kept: a code that does not exist is undef, and reading goes on
// behind it, out of step.
constexpr ValueType value_type_of_code(std::uint8_t code) {
  return code < value_types.size() ? static_cast<ValueType>(code) : ValueType::undef;
}

constexpr const ValueTypeInfo& value_type_info(ValueType type) {
  return value_types[static_cast<std::size_t>(type)];
}

}  // namespace CT::Checkpoint
