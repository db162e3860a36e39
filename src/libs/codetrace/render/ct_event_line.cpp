// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_event_line.h"

#include <QString>
#include <algorithm>
#include <string>
#include <string_view>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_text.h"

namespace CT {

namespace {

// A digit of any script, as Qt counts them, taken off the text; -1, and nothing taken, if there is
// none.
int take_digit(std::string_view& text) {
  if (text.empty()) return -1;
  std::string_view rest = text;
  const std::string_view character = take_character(rest);
  // Qt looks at UTF-16 code units, so what takes two of them is no digit.
  const int value =
      character.size() > 3
          ? -1
          : QString::fromUtf8(character.data(), static_cast<qsizetype>(character.size()))
                .at(0)
                .digitValue();
  if (value >= 0) text = rest;
  return value;
}

struct Marker {
  std::string_view text;  // empty: there is none
  int number = 0;
  bool is_localised = false;
};

// Takes the text up to the first marker off `text`, and that marker; all of it if there is none.
std::string_view take_to_marker(std::string_view& text, Marker& marker) {
  const std::string_view whole = text;
  marker = {};
  while (true) {
    const std::size_t percent = text.find('%');
    if (percent == std::string_view::npos) {
      text = {};
      return whole;
    }
    std::string_view rest = text.substr(percent + 1);
    const bool is_localised = rest.starts_with('L');
    if (is_localised) rest.remove_prefix(1);
    const int first = take_digit(rest);
    if (first < 0) {
      text = text.substr(percent + 1);
      continue;
    }
    const int second = take_digit(rest);
    const auto begin = static_cast<std::size_t>(text.data() - whole.data()) + percent;
    const std::size_t size = whole.size() - begin - rest.size();
    marker = {whole.substr(begin, size), second < 0 ? first : 10 * first + second, is_localised};
    text = rest;
    return whole.substr(0, begin);
  }
}

// A piece of a text, in which a byte-order mark is a character like any other.
void put_piece(Writer& out, std::string_view piece) {
  while (piece.starts_with(byte_order_mark)) {
    out.put(byte_order_mark);
    piece.remove_prefix(byte_order_mark.size());
  }
  put_text(out, piece);
}

// Lets Qt see a marker with digits that are not ASCII: it prints a warning about each.
void let_qt_warn(const Marker& marker) {
  const bool is_ascii = std::all_of(marker.text.begin(), marker.text.end(),
                                    [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (is_ascii) return;
  static_cast<void>(
      QString::fromUtf8(marker.text.data(), static_cast<qsizetype>(marker.text.size())).arg(0));
}

int lowest_marker(std::string_view name, int lowest) {
  Marker marker;
  while (!name.empty()) {
    take_to_marker(name, marker);
    if (marker.text.empty()) continue;
    let_qt_warn(marker);
    lowest = std::min(lowest, marker.number);
  }
  return lowest;
}

void put_number(Writer& out, std::uint32_t sequence, bool is_localised) {
  if (!is_localised) {
    put_unsigned(out, sequence);
    return;
  }
  const QByteArray digits = QStringLiteral("%L1").arg(sequence).toUtf8();
  out.put(std::string_view(digits.constData(), static_cast<std::size_t>(digits.size())));
}

}  // namespace

void put_event_line(Writer& out, const Checkpoint::String& name, std::uint32_t sequence) {
  constexpr int own_marker = 2;
  std::string_view left = without_byte_order_mark(name.view());
  const int replaced = lowest_marker(left, own_marker);
  out.put("(EVENT) Kelvo Monitor Event: ");
  while (!left.empty() && out.ok()) {
    Marker marker;
    put_piece(out, take_to_marker(left, marker));
    if (marker.text.empty()) continue;
    if (marker.number == replaced) {
      put_number(out, sequence, marker.is_localised);
    } else {
      put_piece(out, marker.text);
    }
  }
  out.put(". Event sequence: ");
  if (replaced == own_marker) {
    put_unsigned(out, sequence);
  } else {
    out.put("%2");
  }
}

}  // namespace CT
