// SPDX-License-Identifier: MIT
//
// The one-line text of values, in the manner of PHP.
#pragma once

#include "codetrace/bytes/ct_plain_array.h"
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

 protected:
  // The name of a class or a resource type at a place of ADD DATA; null for none.
  virtual void write_name(const File& file, const unsigned char* place, Writer& out);

 private:
  struct OpenArray {
    ValueTape::Index item;
    bool value_next;
    bool is_first;
  };

  void write_leaf(const ValueTape& tape, ValueTape::Index i, Writer& out, bool quoted);
  void write_object(const ValueTape& tape, ValueTape::Index i, Writer& out);
  void write_resource(const ValueTape& tape, ValueTape::Index i, Writer& out);
  void write_array(const ValueTape& tape, ValueTape::Index root, Writer& out);

  PlainArray<OpenArray> open_;
};

}  // namespace CT::Checkpoint
