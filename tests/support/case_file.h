// SPDX-License-Identifier: MIT
//
// CaseFile: one golden case, a text file of sections that hold a trace (or the bytes of a file), a
// command, and what the command is to write. Outputs are exact bytes, written with a few escapes;
// tests/cli/README.md describes the format. `set_output` and `text` write a case anew. Mistakes are
// thrown as TextError with the number of the line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CT::Test {

class CaseFile {
 public:
  explicit CaseFile(std::string_view text);

  struct Section {
    std::string name;
    std::size_t line = 0;            // of its first line of content
    std::vector<std::string> lines;  // as they stand in the file
  };

  bool has(std::string_view name) const { return find(name) != nullptr; }
  // The lines of a section as they stand; empty if there is none.
  std::string content(std::string_view name) const;
  std::size_t content_line(std::string_view name) const;
  // The bytes that an expected section stands for; empty if there is none.
  std::string output(std::string_view name) const;
  // Puts the bytes in; a section that is empty and was not there stays away.
  void set_output(std::string_view name, std::string_view bytes);
  // Names of the sections that begin with this word, for `output FILE`.
  std::vector<std::string> arguments(std::string_view word) const;

  std::string text() const;

 private:
  const Section* find(std::string_view name) const;

  std::vector<std::string> head_;  // the lines before the first section
  std::vector<Section> sections_;
};

// The words of a command line: blanks part them, double quotes keep them together.
std::vector<std::string> split_command(std::string_view line);

}  // namespace CT::Test
