// SPDX-License-Identifier: MIT
#include <QRegularExpression>
#include <QString>
#include <memory>
#include <new>

#include "ctsql/ct_functions.h"

namespace CT::Sql {

namespace {

QString qstring_of(sqlite3_value* value) {
  const std::string_view text = text_of(value);
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// The pattern of this run: compiled once for all rows if it is the same for all.
const QRegularExpression* pattern_of(sqlite3_context* context, sqlite3_value* value) {
  const auto* known = static_cast<const QRegularExpression*>(sqlite3_get_auxdata(context, 0));
  if (known != nullptr) return known;
  const QString own = qstring_of(value);
  // First as it stands, for a message that counts from its begin.
  auto made = std::make_unique<QRegularExpression>(own);
  if (!made->isValid()) {
    const QByteArray error = "regexp: " + made->errorString().toUtf8();
    sqlite3_result_error(context, error.constData(), -1);
    return nullptr;
  }
  made->setPattern(QStringLiteral("(*LIMIT_MATCH=1000000)") + own);
  // May destroy it at once if memory has run out.
  sqlite3_set_auxdata(context, 0, made.release(),
                      [](void* pattern) { delete static_cast<QRegularExpression*>(pattern); });
  known = static_cast<const QRegularExpression*>(sqlite3_get_auxdata(context, 0));
  if (known == nullptr) sqlite3_result_error_nomem(context);
  return known;
}

// "x regexp y" calls regexp(y, x).
void regexp(sqlite3_context* context, int, sqlite3_value** values) {
  try {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL ||
        sqlite3_value_type(values[1]) == SQLITE_NULL) {
      return;
    }
    const QRegularExpression* pattern = pattern_of(context, values[0]);
    if (pattern == nullptr) return;
    const QRegularExpressionMatch match = pattern->match(qstring_of(values[1]));
    if (!match.isValid()) {
      return sqlite3_result_error(context, "regexp: the pattern takes too long on this text", -1);
    }
    sqlite3_result_int(context, match.hasMatch() ? 1 : 0);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

}  // namespace

int add_regexp(sqlite3* database) {
  return sqlite3_create_function_v2(database, "regexp", 2,
                                    SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr,
                                    regexp, nullptr, nullptr, nullptr);
}

int add_functions(sqlite3* database) {
  const int status = add_regexp(database);
  return status == SQLITE_OK ? add_plain(database) : status;
}

}  // namespace CT::Sql
