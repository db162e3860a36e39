// SPDX-License-Identifier: MIT
//
// The one-line text of values, in the manner of PHP.
#pragma once

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_leaf.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_writer.h"
#include "kcommon/k_export.h"

namespace CT::Checkpoint {

// Writes values of a tape; keeps its working memory from one to the next.
class CODETRACE_EXPORT ValueTextWriter {
 public:
  ValueTextWriter() = default;
  ValueTextWriter(const ValueTextWriter&) = delete;
  ValueTextWriter& operator=(const ValueTextWriter&) = delete;
  virtual ~ValueTextWriter() = default;

  // `quoted`: whether a text that is not inside an array stands in double quotes.
  void write(const ValueTape& tape, ValueTape::Index root, Writer& out, bool quoted = true);

  // The same in quotes and escaped.
  // Kept: texts inside arrays are never escaped.
  void write_escaped(const ValueTape& tape, ValueTape::Index root, Writer& out);

  // The same for a value that is no array; `file` is the one that it is of.
  void write(const Leaf& leaf, const File& file, Writer& out, bool quoted = true);
  void write_escaped(const Leaf& leaf, const File& file, Writer& out);

 protected:
  // The name of a class or a resource type at a place of ADD DATA; null for none.
  virtual void write_name(const File& file, const unsigned char* place, Writer& out);

 private:
  struct OpenArray {
    ValueTape::Index item;
    bool value_next;
    bool is_first;
  };

  void write_object(const Leaf& leaf, const File& file, Writer& out);
  void write_resource(const Leaf& leaf, const File& file, Writer& out);
  void write_array(const ValueTape& tape, ValueTape::Index root, Writer& out);

  PlainArray<OpenArray> open_;
};

}  // namespace CT::Checkpoint
