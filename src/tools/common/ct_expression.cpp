// SPDX-License-Identifier: MIT
#include "tools/common/ct_expression.h"

#include <QString>

namespace CT::Tool {

namespace {

QString as_qstring(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

bool Expression::is_one(std::string_view text) {
  return text.size() >= 2 && text.front() == '/' && text.back() == '/';
}

Expression::Expression(std::string_view text, Case of_letters) {
  const QString own = as_qstring(text.substr(1, text.size() - 2));
  if (of_letters == Case::ignored) {
    expression_.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
  }
  // First as it stands, for a message that counts from its begin.
  expression_.setPattern(own);
  if (!expression_.isValid()) {
    error_ = expression_.errorString().toStdString();
    return;
  }
  expression_.setPattern(QStringLiteral("(*LIMIT_MATCH=1000000)") + own);
}

bool Expression::matches(std::string_view text) const {
  return error_.empty() && expression_.match(as_qstring(text)).hasMatch();
}

}  // namespace CT::Tool
