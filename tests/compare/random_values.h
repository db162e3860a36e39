// SPDX-License-Identifier: MIT
//
// RandomValues: random values of the script and random cut strings, most of them well-formed, some
// with counts that lie or without their end. It adds to Awkward's values what those seldom are:
// arrays with the cut marker in each place, maps whose keys look alike, deep nests.
#pragma once

#include <cstdint>
#include <vector>

#include "awkward.h"
#include "fields.h"
#include "value_names.h"

namespace CT::Test {

class RandomValues {
 public:
  // Borrows both.
  RandomValues(Awkward& random, const ValueNames& names) : random_(random), names_(names) {}

  Fields any();
  std::vector<Fields> several(std::size_t most);
  // What is written as a body or a header line: whole, cut, or with a length that lies.
  Fields cut_string();
  // An object of one of the classes, as methods have them.
  Fields object();

 private:
  Fields small();
  Fields cut_array();
  Fields twin_keys();
  Fields lying_array();

  Awkward& random_;
  const ValueNames& names_;
};

}  // namespace CT::Test
