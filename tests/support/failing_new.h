// SPDX-License-Identifier: MIT
//
// FailingNew: while it lives, one allocation of this thread by operator new fails.
//
//   {
//     const FailingNew failing(3);  // the fourth from here on
//     EXPECT_THROW(table.add(descriptor), std::bad_alloc);
//   }
//
// It replaces operator new of the whole program that uses it.
#pragma once

#include <cstddef>

namespace CT::Test {

class FailingNew {
 public:
  // `after`: how many allocations succeed before the one that fails; those behind it succeed again.
  explicit FailingNew(std::size_t after);
  ~FailingNew();
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;

  // Whether it came to that.
  static bool has_failed();
};

}  // namespace CT::Test
