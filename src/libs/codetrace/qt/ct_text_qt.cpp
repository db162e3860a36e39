// SPDX-License-Identifier: MIT
#include "codetrace/qt/ct_text_qt.h"

#include "codetrace/bytes/ct_utf8.h"

namespace CT {

QString to_qstring(std::string_view decoded) {
  QString marks;
  while (decoded.starts_with(byte_order_mark)) {
    marks += QChar(QChar::ByteOrderMark);
    decoded.remove_prefix(byte_order_mark.size());
  }
  return marks + QString::fromUtf8(decoded.data(), static_cast<qsizetype>(decoded.size()));
}

}  // namespace CT
