// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_text_table.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <QList>
#include <QString>
#include <algorithm>
#include <array>

namespace CT::Tool {

namespace {

constexpr std::string_view gap = "  ";
constexpr std::string_view cut = "\xE2\x80\xA6";  // an ellipsis

bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

bool commands_terminals(char32_t c) {
  constexpr char32_t first_c1 = 0x80;
  constexpr char32_t last_c1 = 0x9F;
  constexpr char32_t del = 0x7F;
  // Those that turn the direction of writing hide what a text says.
  const bool turns = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
  return c < ' ' || (c >= del && c <= last_c1 && (c == del || c >= first_c1)) || turns;
}

}  // namespace

std::string fitted(std::string_view text, std::size_t width) {
  if (width == 0 || shown_width(text) <= width) return std::string(text);
  std::size_t end = 0;
  for (std::size_t left = width; left != 0; --left) {
    if (left == 1) return std::string(text.substr(0, end)) += cut;
    ++end;
    while (end != text.size() && is_continuation(text[end])) ++end;
  }
  return {};
}

std::size_t shown_width(std::string_view text) {
  return text.size() -
         static_cast<std::size_t>(std::count_if(text.begin(), text.end(), is_continuation));
}

std::string shown_text(std::string_view stored) {
  const auto is_plain = [](char c) { return c >= ' ' && c <= '~'; };
  if (std::all_of(stored.begin(), stored.end(), is_plain)) return std::string(stored);
  QString shown;
  for (const char32_t c :
       QString::fromUtf8(stored.data(), static_cast<qsizetype>(stored.size())).toUcs4()) {
    switch (c) {
      case '\n': shown += QLatin1String("\\n"); break;
      case '\r': shown += QLatin1String("\\r"); break;
      case '\t': shown += QLatin1String("\\t"); break;
      default:
        if (commands_terminals(c)) {
          shown += QStringLiteral("\\x%1").arg(static_cast<uint>(c), 2, 16, QLatin1Char('0'));
        } else {
          shown += QString::fromUcs4(&c, 1);
        }
    }
  }
  return shown.toStdString();
}

std::size_t terminal_width(int descriptor) {
  winsize size = {};
  if (isatty(descriptor) == 0 || ioctl(descriptor, TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col;
}

std::string shortened(std::string_view text, std::size_t width) {
  // A character has four bytes at most, and what is shown of one ten.
  return fitted(shown_text(text.substr(0, 4 * width + 4)), width);
}

std::string end_of(const std::string& path, std::size_t width) {
  const std::size_t shown = shown_width(path);
  if (shown <= width) return path;
  std::size_t at = 0;
  for (std::size_t dropped = shown - width + 1; dropped != 0; --dropped) {
    ++at;
    while (at != path.size() && is_continuation(path[at])) ++at;
  }
  const std::size_t part = path.find_first_of("/\\", at);
  if (part != std::string::npos && path.size() - part >= width / 2) at = part;
  std::string end = "\xE2\x80\xA6";
  return end.append(path, at);
}

std::vector<std::size_t> TextTable::widths() const {
  std::vector<std::size_t> widths;
  for (const Column& column : columns_) widths.push_back(shown_width(column.title));
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i != row.size(); ++i) {
      widths[i] = std::max(widths[i], shown_width(row[i]));
    }
  }
  return widths;
}

std::string TextTable::text(std::size_t width, const Style& style) const {
  const std::vector<std::size_t> widths = this->widths();
  std::string lines;
  const auto line_of = [&](const auto& cell_of) {
    std::string line;
    for (std::size_t i = 0; i != columns_.size(); ++i) {
      const std::string& cell = cell_of(i);
      const std::string blanks(widths[i] - shown_width(cell), ' ');
      if (i != 0) line += gap;
      line += columns_[i].align == Align::right ? blanks + cell : cell + blanks;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return fitted(line, width);
  };
  lines += style.heading(
      line_of([&](std::size_t i) -> const std::string& { return columns_[i].title; }));
  lines += '\n';
  for (const auto& row : rows_) {
    lines += line_of([&](std::size_t i) -> const std::string& { return row[i]; });
    lines += '\n';
  }
  return lines;
}

}  // namespace CT::Tool
