// SPDX-License-Identifier: MIT
//
// Whether a value that the library decoded is the same, in all its depth, as the plain one.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "codetrace/model/ct_value.h"
#include "plain_value.h"

namespace CT::Test {

inline bool same_string(const PlainValue& plain, const Checkpoint::String& string) {
  return string.view() == plain.text && string.orig_sz == plain.orig_sz;
}

inline bool same_object(const PlainValue& plain, const Checkpoint::ValueRef& value) {
  const auto entry = value.class_entry();
  if (value.object_handle() != static_cast<std::uint64_t>(plain.number)) return false;
  if (!plain.class_id) return entry == nullptr;
  return entry != nullptr && entry->id() == static_cast<int>(*plain.class_id) &&
         entry->name().view() == plain.text;
}

inline bool same_value(const PlainValue& plain, const Checkpoint::ValueRef& value);

inline bool same_array(const PlainValue& plain, const Checkpoint::ValueRef& value) {
  if (value.is_cut() != plain.is_cut || value.is_list() != plain.is_list ||
      value.declared_count() != plain.count || value.size() != plain.pairs.size()) {
    return false;
  }
  auto expected = plain.pairs.begin();
  for (const auto& [key, element] : value.elements()) {
    if (!same_value(expected->first, key) || !same_value(expected->second, element)) return false;
    ++expected;
  }
  return true;
}

inline bool same_value(const PlainValue& plain, const Checkpoint::ValueRef& value) {
  using Checkpoint::ValueType;
  if (static_cast<int>(value.type()) != plain.type) return false;
  switch (value.type()) {
    case ValueType::long_: return value.as_long() == plain.number;
    case ValueType::double_:
      return std::bit_cast<std::uint64_t>(value.as_double()) ==
             std::bit_cast<std::uint64_t>(plain.real);
    case ValueType::string: return same_string(plain, value.string());
    case ValueType::array: return same_array(plain, value);
    case ValueType::object: return same_object(plain, value);
    case ValueType::resource:
      return value.resource_handle() == plain.number && value.resource_name().view() == plain.text;
    default: return value.as_boolean() == (value.type() == ValueType::true_);
  }
}

// For EXPECT_TRUE: shows both as text.
inline ::testing::AssertionResult is_same_value(const PlainValue& plain,
                                                const Checkpoint::KVal& value) {
  if (same_value(plain, value.ref())) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "expected " << plain.to_string(true).toStdString()
                                       << "\ngot " << value.to_string(true).toStdString();
}

}  // namespace CT::Test
