// SPDX-License-Identifier: MIT
//
// How stored texts are shown.
#include "codetrace/model/ct_string.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_text.h"

namespace CT::Checkpoint {

void String::write(Writer& out) const {
  put_text(out, view());
  if (is_cut()) out.put(cut_marker);
}

void String::write_escaped(Writer& out) const {
  put_escaped_text(out, view());
  if (is_cut()) out.put(cut_marker);
}

void String::dump(Writer& out) const {
  if (orig_sz < 0) {
    write(out);
    return;
  }
  out.put('[');
  put_signed(out, orig_sz);
  out.put(':');
  put_signed(out, static_cast<std::int32_t>(length));
  out.put("] \"");
  write(out);
  out.put('"');
}

void String::write_json(JsonWriter& out) const {
  if (orig_sz < 0) {
    out.text(view());
    return;
  }
  out.begin_object();
  if (is_cut()) {
    out.key("orig_sz");
    out.number(std::int64_t{orig_sz});
  }
  out.key("string");
  out.text(view());
  out.end_object();
}

}  // namespace CT::Checkpoint
