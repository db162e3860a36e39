// SPDX-License-Identifier: MIT
//
// Values that follow each other in a payload, to be read where they stand and without a tape, by
// whoever looks at each once.
#pragma once

#include <cstdint>

#include "codetrace/bytes/ct_cursor.h"
#include "codetrace/model/ct_value_tape.h"

namespace CT::Checkpoint {

// Borrows: the payload, the file, and the table of classes, which may be null.
struct ValueCursor {
  Cursor at;               // at the type code of the next value
  std::uint32_t left = 0;  // values still to come, as far as the payload goes
  const File* file = nullptr;
  const Entities* entities = nullptr;

  // The type of the next value; undef if there is none.
  [[nodiscard]] ValueType next_type() const {
    Cursor ahead = at;
    return left != 0 ? value_type_of_code(ahead.u8()) : ValueType::undef;
  }
};

}  // namespace CT::Checkpoint
