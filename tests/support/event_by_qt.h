// SPDX-License-Identifier: MIT
//
// What QString::arg makes of an event's line. Qt took the digits of every script for digits of a
// marker until 6.4, of which the tool keeps the output; later ones take those of ASCII alone.
#pragma once

#include <QString>
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace CT::Test {

inline QString event_name_by_qt(std::string_view stored) {
  return QString::fromUtf8(stored.data(), static_cast<qsizetype>(stored.size()));
}

// Whether this Qt would read the name as the one does whose output is kept.
inline bool qt_knows_all_digits_of(const QString& name) {
  static const bool takes_all =
      QStringLiteral("%\uFF11").arg(QLatin1String("x")) == QLatin1String("x");
  return takes_all || std::none_of(name.begin(), name.end(), [](QChar c) {
           return c.unicode() > '9' && c.digitValue() >= 0;
         });
}

inline std::string event_line_by_qt(const QString& name, std::uint32_t sequence) {
  return QStringLiteral("(EVENT) Kelvo Monitor Event: %1. Event sequence: %2")
      .arg(name)
      .arg(sequence)
      .toStdString();
}

}  // namespace CT::Test
