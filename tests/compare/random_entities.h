// SPDX-License-Identifier: MIT
//
// RandomEntities: the ADD DATA of a random trace, and references into it. Texts, classes and
// functions have odd names and share them; descriptors are of every type byte, overlap when
// references lead into their middle, and may miss their last bytes at the section's end. It must
// write all of ADD DATA before DATA is begun. References are good, or wild as often as asked for.
#pragma once

#include <string>
#include <vector>

#include "awkward.h"
#include "fields.h"
#include "value_names.h"

namespace CT::Test {

class RandomEntities {
 public:
  // Every `wild`th reference leads anywhere; none if it is 0. Borrows `random`.
  RandomEntities(Awkward& random, ByteOrder order, std::size_t wild);

  Ref text();
  Ref klass();
  Ref function();
  // Anything: near the edges of both sections, into the middle of something, far away.
  Ref wild();

  // What values refer to, and the trace that all of it is written to.
  const ValueNames& names() const { return names_; }
  TraceBuilder& trace() { return names_.trace; }

 private:
  std::string odd_text();
  Fields class_fields();
  Fields function_fields();
  Fields last_descriptor(bool function);
  bool goes_wild() { return wild_ != 0 && random_.one_in(wild_); }
  std::uint8_t type_byte();
  std::string seven_bytes();
  std::uint32_t number();
  template <class Items>
  auto any(const Items& items) {
    return items[random_.below(items.size())];
  }

  Awkward& random_;
  std::size_t wild_;
  ValueNames names_;
  std::vector<Ref> texts_;
  std::vector<Ref> functions_;
};

}  // namespace CT::Test
