// SPDX-License-Identifier: MIT
//
// The one-line text of values, in the manner of PHP.
#pragma once

#include <string_view>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_value_cursor.h"
#include "codetrace/model/ct_value_ref.h"
#include "codetrace/render/ct_writer.h"
#include "kcommon/k_export.h"

namespace CT::Checkpoint {

// Writes values; keeps its working memory from one to the next.
class CODETRACE_EXPORT ValueTextWriter {
 public:
  // How a text that is not inside an array is written. Kept: texts inside arrays always stand in
  // quotes and are never escaped.
  enum class Form { bare, quoted, escaped };

  ValueTextWriter() = default;
  ValueTextWriter(const ValueTextWriter&) = delete;
  ValueTextWriter& operator=(const ValueTextWriter&) = delete;
  virtual ~ValueTextWriter() = default;

  void write(const ValueRef& value, Writer& out, Form form = Form::quoted);

  // Writes the next value with `lead` before it and steps over it. False, and nothing is written,
  // if there is none or nothing of it is whole. Once the output failed, the cursor stands anywhere.
  bool write(ValueCursor& values, Writer& out, Form form = Form::quoted,
             std::string_view lead = {});

  // Writes all that are still to come and whole, with commas between them.
  void write_all(ValueCursor& values, Writer& out, Form form);

 protected:
  // The name of a class or a resource type at a place of ADD DATA; null for none.
  virtual void write_name(const File& file, const unsigned char* place, Writer& out);

 private:
  struct OpenArray {
    std::uint32_t left;  // pairs still to come, the current one included
    bool is_first;       // no pair was written
    bool value_next;     // the current pair's key is written
    bool is_whole;       // is known to be
  };

  struct CODETRACE_HIDDEN StoredValue;

  CODETRACE_HIDDEN static StoredValue read_stored(Cursor& at);
  CODETRACE_HIDDEN void write_stored(const StoredValue& value, const ValueCursor& values, Form form,
                                     bool is_whole, Writer& out);
  CODETRACE_HIDDEN bool write_next(ValueCursor& values, Writer& out, Form form,
                                   std::string_view lead);
  CODETRACE_HIDDEN void write_open_arrays(ValueCursor& values, Writer& out);
  CODETRACE_HIDDEN void write_key(ValueCursor& values, OpenArray& array, Writer& out);
  CODETRACE_HIDDEN void write_value(ValueCursor& values, bool is_whole, Writer& out);
  CODETRACE_HIDDEN void write_object(const StoredValue& value, const ValueCursor& values,
                                     Writer& out);
  CODETRACE_HIDDEN void write_resource(const StoredValue& value, const File& file, Writer& out);

  PlainArray<OpenArray> open_;
};

}  // namespace CT::Checkpoint
