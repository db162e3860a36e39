// SPDX-License-Identifier: MIT
#include "case_file.h"

#include <algorithm>
#include <array>

#include "text_scanner.h"

namespace CT::Test {

namespace {

constexpr std::array known_sections = {"trace",  "file",   "directory", "command",
                                       "stdout", "stderr", "status"};

std::vector<std::string> split_lines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string hex_escape(char c) {
  constexpr std::string_view digits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  return {'\\', 'x', digits[byte >> 4U], digits[byte & 15U]};
}

// The length of the well-formed UTF-8 sequence of two bytes or more that `text` begins with, or 0.
std::size_t utf8_length(std::string_view text) {
  const auto byte = [&](std::size_t i) -> unsigned {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const auto follows = [&](std::size_t count) {
    for (std::size_t i = 2; i <= count; ++i) {
      if ((byte(i) & 0xc0U) != 0x80U) return false;
    }
    return true;
  };
  const auto second = [&](unsigned low, unsigned high) {
    return byte(1) >= low && byte(1) <= high;
  };
  const unsigned first = byte(0);
  if (first >= 0xc2 && first <= 0xdf) return second(0x80, 0xbf) ? 2 : 0;
  if (first >= 0xe0 && first <= 0xef) {
    const bool good = second(first == 0xe0 ? 0xa0 : 0x80, first == 0xed ? 0x9f : 0xbf);
    return good && follows(2) ? 3 : 0;
  }
  if (first >= 0xf0 && first <= 0xf4) {
    const bool good = second(first == 0xf0 ? 0x90 : 0x80, first == 0xf4 ? 0x8f : 0xbf);
    return good && follows(3) ? 4 : 0;
  }
  return 0;
}

std::string escape_line(std::string_view line) {
  constexpr std::string_view bom = "\xef\xbb\xbf";
  std::string result;
  while (!line.empty()) {
    const char c = line.front();
    const std::size_t sequence = line.substr(0, 3) == bom ? 0 : utf8_length(line);
    if (sequence > 0) {
      result += line.substr(0, sequence);
      line.remove_prefix(sequence);
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\\') {
      result += "\\\\";
    } else if (line.size() == 1 && c == ' ') {
      result += "\\s";
    } else if (line.size() == 1 && c == '\t') {
      result += "\\t";
    } else if ((byte < 0x20 && c != '\t') || byte >= 0x7f) {
      result += hex_escape(c);
    } else {
      result += c;
    }
    line.remove_prefix(1);
  }
  return result.starts_with("== ") ? "\\x3d" + result.substr(1) : result;
}

std::string unescape_line(std::string_view line, std::size_t number, bool& ends_with_newline) {
  std::string result;
  ends_with_newline = true;
  while (!line.empty()) {
    const char c = line.front();
    line.remove_prefix(1);
    if (c != '\\') {
      result += c;
    } else if (line.empty()) {
      ends_with_newline = false;
    } else if (line.front() == 'x' && line.size() >= 3) {
      const auto digits = line.substr(1, 2);
      if (digits.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos) {
        throw TextError(number, "'\\x' needs two hex digits");
      }
      result += TextScanner(digits).hex_bytes();
      line.remove_prefix(3);
    } else {
      constexpr std::string_view letters = "\\st";
      constexpr std::string_view meanings = "\\ \t";
      const std::size_t which = letters.find(line.front());
      if (which == std::string_view::npos) throw TextError(number, "unknown escape");
      result += meanings[which];
      line.remove_prefix(1);
    }
  }
  return result;
}

}  // namespace

CaseFile::CaseFile(std::string_view text) {
  std::size_t number = 0;
  for (std::string& line : split_lines(text)) {
    ++number;
    if (line.starts_with("== ")) {
      const std::string name = line.substr(3);
      const std::string word = name.substr(0, name.find(' '));
      const bool known =
          std::find(known_sections.begin(), known_sections.end(), name) != known_sections.end() ||
          word == "output" || word == "no-output";
      if (!known) throw TextError(number, "unknown section '" + name + "'");
      if (has(name)) throw TextError(number, "section '" + name + "' is there twice");
      sections_.push_back({name, number + 1, {}});
    } else if (sections_.empty()) {
      head_.push_back(std::move(line));
    } else {
      sections_.back().lines.push_back(std::move(line));
    }
  }
}

const CaseFile::Section* CaseFile::find(std::string_view name) const {
  for (const Section& section : sections_) {
    if (section.name == name) return &section;
  }
  return nullptr;
}

std::string CaseFile::content(std::string_view name) const {
  std::string result;
  if (const Section* section = find(name)) {
    for (const std::string& line : section->lines) result += line + '\n';
  }
  return result;
}

std::size_t CaseFile::content_line(std::string_view name) const {
  const Section* section = find(name);
  return section == nullptr ? 0 : section->line;
}

std::string CaseFile::output(std::string_view name) const {
  std::string bytes;
  const Section* section = find(name);
  if (section == nullptr) return bytes;
  std::size_t number = section->line;
  for (const std::string& line : section->lines) {
    bool newline = true;
    bytes += unescape_line(line, number++, newline);
    if (newline) bytes += '\n';
  }
  return bytes;
}

void CaseFile::set_output(std::string_view name, std::string_view bytes) {
  const Section* known = find(name);
  if (known == nullptr && bytes.empty()) return;
  if (known == nullptr) {
    sections_.push_back({std::string(name), 0, {}});
    known = &sections_.back();
  }
  Section& section = sections_[static_cast<std::size_t>(known - sections_.data())];
  section.lines.clear();
  for (const std::string& line : split_lines(bytes)) section.lines.push_back(escape_line(line));
  if (!bytes.empty() && bytes.back() != '\n') section.lines.back() += '\\';
}

std::vector<std::string> CaseFile::arguments(std::string_view word) const {
  std::vector<std::string> result;
  for (const Section& section : sections_) {
    if (section.name.starts_with(word) && section.name.substr(word.size(), 1) == " ") {
      result.push_back(section.name.substr(word.size() + 1));
    }
  }
  return result;
}

std::string CaseFile::text() const {
  std::string result;
  for (const std::string& line : head_) result += line + '\n';
  for (const Section& section : sections_) {
    result += "== " + section.name + '\n';
    for (const std::string& line : section.lines) result += line + '\n';
  }
  return result;
}

std::vector<std::string> split_command(std::string_view line) {
  TextScanner scanner(line);
  std::vector<std::string> words;
  while (!scanner.at_end()) {
    words.push_back(scanner.at_string() ? scanner.string() : scanner.run());
  }
  return words;
}

}  // namespace CT::Test
