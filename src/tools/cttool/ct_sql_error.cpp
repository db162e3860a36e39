// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_sql_error.h"

#include <algorithm>

#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

std::string error_text(const Sql::Error& error, std::string_view query) {
  constexpr std::size_t most = 70;  // of a long line, on each side of the place
  std::string text = "cttool: ";
  if (!error.place) return text + "the query: " + shown_text(error.message) + "\n";
  const std::size_t place = std::min(*error.place, query.size());
  const auto before = query.substr(0, place);
  const auto line_number = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t begin = before.rfind('\n') + 1;  // 0 where there is none
  const std::size_t end = std::min(query.find('\n', place), query.size());
  text += "line " + std::to_string(line_number);
  text += ", column " + std::to_string(shown_width(query.substr(begin, place - begin)) + 1);
  text += " of the query: " + shown_text(error.message) + "\n  ";
  const std::size_t from = place - begin > most ? place - most : begin;
  const std::string shown = shown_text(query.substr(from, place - from));
  text += shown + shown_text(query.substr(place, std::min(end - place, most))) + "\n  ";
  text.append(shown_width(shown), ' ');
  return text + "^\n";
}

}  // namespace CT::Tool
