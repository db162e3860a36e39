// SPDX-License-Identifier: MIT
//
// A text of the trace where it lies in the file. It owns nothing: the file's bytes must outlive it.
#pragma once

#include <cstdint>
#include <string_view>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/model/ct_format.h"
#include "kcommon/k_export.h"

class QJsonValue;
class QString;

namespace CT {
class JsonWriter;
class Writer;
}  // namespace CT

namespace CT::Checkpoint {

struct CODETRACE_EXPORT String {
  // orig_sz of texts that the tracer never cuts.
  static constexpr std::int32_t uncuttable = -1;
  // What stands behind a text that was cut, and marks a cut array.
  static constexpr std::string_view cut_marker = Format::cut_marker;

  const char* data = nullptr;         // null: absent, which prints as empty text
  std::uint32_t length = 0;           // bytes at data
  std::int32_t orig_sz = uncuttable;  // bytes before the tracer cut it; equals length if it did not

  [[nodiscard]] std::string_view view() const {
    return data != nullptr ? std::string_view(data, length) : std::string_view();
  }
  [[nodiscard]] bool is_empty() const { return view().empty(); }
  // Whether there is something to see: neither absent, nor empty, nor a NUL at once.
  [[nodiscard]] bool is_present() const {
    const std::string_view text = view();
    return !text.empty() && text.front() != '\0';
  }
  [[nodiscard]] bool is_cut() const { return std::int64_t{orig_sz} > std::int64_t{length}; }
  // Whether it is the text that the tracer puts in place of what it left out, with or without a
  // byte-order mark.
  [[nodiscard]] bool is_cut_marker() const {
    return length >= cut_marker.size() && length <= cut_marker.size() + byte_order_mark.size() &&
           decodes_to(view(), cut_marker);
  }

  // The text, with the cut marker if it was cut; the second escapes quotes and three controls of
  // the text (see ct_text.h).
  void write(Writer& out) const;
  void write_escaped(Writer& out) const;
  // As the checkpoint dump shows it: with its sizes and in quotes if it could have been cut.
  void dump(Writer& out) const;
  // A JSON string; an object with "string" and, when cut, "orig_sz" if it could have been cut.
  void write_json(JsonWriter& out) const;

  // The same forms for programs that work with Qt's classes.
  [[nodiscard]] QString to_string() const;
  [[nodiscard]] QString to_escaped_string() const;
  [[nodiscard]] QJsonValue as_json() const;
};

}  // namespace CT::Checkpoint
