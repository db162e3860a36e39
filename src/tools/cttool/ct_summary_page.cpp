// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_summary_page.h"

#include <algorithm>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

// With its title, and the line between it and the one before.
std::size_t height(const SectionText& section) {
  return section.lines.size() + (section.title.empty() ? 0 : 2);
}

// One thing, which may have several lines.
void drop_last(SectionText& section) {
  section.lines.resize(section.lines.size() - section.lines_each);
  ++section.left_out;
}

// The title says what is not there.
std::string title_of(const SectionText& section, std::size_t columns) {
  if (section.left_out == 0) return fitted(section.title, columns);
  std::string rest = " \xE2\x80\xA6 " + as_count(static_cast<std::int64_t>(section.left_out));
  rest += " more: " + section.more;
  const std::size_t room = columns - std::min(columns, shown_width(rest));
  return shown_width(section.title) <= room ? section.title + rest : std::string();
}

// Or a line of its own, if the title has no room.
std::string rest_of(const SectionText& section) {
  std::string rest = "  \xE2\x80\xA6 ";
  rest += as_count(static_cast<std::int64_t>(section.left_out)) + " more: ";
  return rest += section.more;
}

}  // namespace

std::string page_of(std::vector<SectionText> sections, const PageSize& page, const Style& style) {
  const std::size_t columns = page.columns;
  std::erase_if(sections, [](const SectionText& section) { return section.lines.empty(); });
  const auto whole = [&] {
    std::size_t sum = 0;
    for (const SectionText& section : sections) {
      sum += height(section);
      if (section.left_out != 0 && title_of(section, columns).empty()) ++sum;
    }
    return sum;
  };
  while (whole() > page.lines) {
    const auto largest = std::max_element(
        sections.begin(), sections.end(), [](const SectionText& a, const SectionText& b) {
          const auto spare = [](const SectionText& section) {
            return section.lines.size() - std::min(section.lines.size(), section.least);
          };
          return spare(a) < spare(b);
        });
    if (largest == sections.end() || largest->lines.size() <= largest->least) break;
    drop_last(*largest);
  }
  std::string text;
  for (const SectionText& section : sections) {
    const std::string title = title_of(section, columns);
    if (!section.title.empty()) {
      text += "\n";
      text += style.heading(title.empty() ? fitted(section.title, columns) : title) + "\n";
    }
    for (const std::string& line : section.lines) text += fitted(line, columns) + "\n";
    if (title.empty() && section.left_out != 0) text += fitted(rest_of(section), columns) + "\n";
  }
  return text;
}

}  // namespace CT::Tool
