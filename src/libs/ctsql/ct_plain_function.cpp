// SPDX-License-Identifier: MIT
#include <charconv>
#include <cmath>
#include <cstdint>
#include <new>
#include <optional>
#include <string>

#include "ctsql/ct_functions.h"

namespace CT::Sql {

namespace {

void put_utf8(std::string& text, char32_t c) {
  constexpr char32_t replacement = 0xFFFD;
  if (c >= 0xD800 && c <= 0xDFFF) c = replacement;  // half of a pair
  const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (c < 0x80) return put(c);
  if (c < 0x800) {
    put(0xC0 | c >> 6);
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 0x3F));
  } else {
    put(0xF0 | c >> 18);
    put(0x80 | (c >> 12 & 0x3F));
    put(0x80 | (c >> 6 & 0x3F));
  }
  put(0x80 | (c & 0x3F));
}

// Reads a JSON string behind its opening quote.
class StringReader {
 public:
  explicit StringReader(std::string_view rest) : rest_(rest) {}

  // Nothing if it is none, or if anything stands behind it.
  std::optional<std::string> read() {
    std::string text;
    while (!rest_.empty()) {
      const char c = take();
      if (c == '"') return rest_.empty() ? std::optional(text) : std::nullopt;
      if (c != '\\') {
        text.push_back(c);
      } else if (!read_escape(text)) {
        return std::nullopt;
      }
    }
    return std::nullopt;
  }

 private:
  char take() {
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }

  bool read_escape(std::string& text) {
    if (rest_.empty()) return false;
    const char c = take();
    switch (c) {
      case '"':
      case '\\':
      case '/': text.push_back(c); return true;
      case 'b': text.push_back('\b'); return true;
      case 'f': text.push_back('\f'); return true;
      case 'n': text.push_back('\n'); return true;
      case 'r': text.push_back('\r'); return true;
      case 't': text.push_back('\t'); return true;
      case 'u': return read_unit(text);
      default: return false;
    }
  }

  // Four digits, and of a pair four more.
  bool read_unit(std::string& text) {
    const auto first = digits();
    if (!first) return false;
    const bool is_high = *first >= 0xD800 && *first < 0xDC00;
    if (is_high && rest_.starts_with("\\u")) {
      const std::string_view before = rest_;
      rest_.remove_prefix(2);
      const auto second = digits();
      if (!second) return false;
      if (*second >= 0xDC00 && *second < 0xE000) {
        put_utf8(text, 0x10000 + ((*first - 0xD800) << 10) + (*second - 0xDC00));
        return true;
      }
      rest_ = before;
    }
    put_utf8(text, *first);
    return true;
  }

  std::optional<char32_t> digits() {
    constexpr std::size_t count = 4;
    std::uint32_t unit = 0;
    if (rest_.size() < count) return std::nullopt;
    const auto read = std::from_chars(rest_.data(), rest_.data() + count, unit, 16);
    if (read.ec != std::errc() || read.ptr != rest_.data() + count) return std::nullopt;
    rest_.remove_prefix(count);
    return unit;
  }

  std::string_view rest_;
};

// A number, if the whole text is one as JSON has them.
bool put_number(sqlite3_context* context, std::string_view text) {
  const char* const end = text.data() + text.size();
  if (text.empty() || (text.front() != '-' && (text.front() < '0' || text.front() > '9'))) {
    return false;
  }
  std::int64_t whole = 0;
  const auto read = std::from_chars(text.data(), end, whole);
  if (read.ec == std::errc() && read.ptr == end) {
    sqlite3_result_int64(context, whole);
    return true;
  }
  double real = 0;
  const auto read_real = std::from_chars(text.data(), end, real);
  if (read_real.ec != std::errc() || read_real.ptr != end || !std::isfinite(real)) {
    return false;
  }
  sqlite3_result_double(context, real);
  return true;
}

void plain(sqlite3_context* context, int, sqlite3_value** values) {
  try {
    if (sqlite3_value_type(values[0]) != SQLITE_TEXT) {
      return sqlite3_result_value(context, values[0]);
    }
    const std::string_view text = text_of(values[0]);
    if (text == "null") return;
    if (text == "true" || text == "false") return sqlite3_result_int(context, text == "true");
    if (put_number(context, text)) return;
    if (text.starts_with('"')) {
      if (const auto string = StringReader(text.substr(1)).read()) {
        return sqlite3_result_text64(context, string->data(), string->size(), SQLITE_TRANSIENT,
                                     SQLITE_UTF8);
      }
    }
    sqlite3_result_value(context, values[0]);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

}  // namespace

int add_plain(sqlite3* database) {
  return sqlite3_create_function_v2(database, "plain", 1,
                                    SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr,
                                    plain, nullptr, nullptr, nullptr);
}

}  // namespace CT::Sql
