// SPDX-License-Identifier: MIT
//
// The one-line text of values, in the manner of PHP.
#pragma once

#include <vector>

#include "ct_value_tape.h"
#include "ct_writer.h"

namespace CT::Checkpoint {

// Writes values of a tape; keeps its working memory from one to the next.
class ValueTextWriter {
 public:
  // `quoted`: whether a text that is not inside an array stands in double quotes.
  void write(const ValueTape& tape, ValueTape::Index root, Writer& out, bool quoted = true);

  // The same in quotes and escaped.
  // Kept: texts inside arrays are never escaped.
  void write_escaped(const ValueTape& tape, ValueTape::Index root, Writer& out);

 private:
  struct OpenArray {
    ValueTape::Index item;
    bool value_next;
    bool is_first;
  };

  void write_array(const ValueTape& tape, ValueTape::Index root, Writer& out);

  std::vector<OpenArray> open_;
};

}  // namespace CT::Checkpoint
