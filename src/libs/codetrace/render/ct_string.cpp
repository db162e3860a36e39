// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_string.h"

#include <QJsonObject>

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

QString String::to_string() const {
  MemoryWriter text;
  write(text);
  return to_qstring(text.view());
}

QString String::to_escaped_string() const {
  MemoryWriter text;
  write_escaped(text);
  return to_qstring(text.view());
}

QJsonValue String::as_json() const {
  if (orig_sz < 0) return to_string();
  QJsonObject object;
  if (is_cut()) object.insert(QStringLiteral("orig_sz"), orig_sz);
  object.insert(QStringLiteral("string"),
                QString::fromUtf8(view().data(), static_cast<qsizetype>(view().size())));
  return object;
}

}  // namespace CT::Checkpoint
