// SPDX-License-Identifier: MIT
//
// Holds the #include lines of the sources to the table of layers in docs/architecture.md.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

namespace CT::Test {
namespace {

const std::filesystem::path root = CODETRACE_ROOT;

std::vector<std::string> lines_of(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

// Component to row, as "| 3 | `ct_json` | ..." says.
std::map<std::string, int> documented_rows() {
  const std::regex row(R"(\| (\d+) \| `(\w+)` \|.*)");
  std::map<std::string, int> rows;
  std::smatch match;
  for (const std::string& line : lines_of(root / "docs/architecture.md")) {
    if (std::regex_match(line, match, row)) rows[match[2]] = std::stoi(match[1]);
  }
  return rows;
}

// The component of a file: the longest documented name that the file's name begins with.
std::string component_of(const std::string& stem, const std::map<std::string, int>& rows) {
  std::string best;
  for (const auto& [name, row] : rows) {
    const bool fits = stem == name || stem.starts_with(name + "_");
    if (fits && name.size() > best.size()) best = name;
  }
  return best;
}

std::vector<std::filesystem::path> sources() {
  std::vector<std::filesystem::path> found;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root / "src")) {
    const auto extension = entry.path().extension();
    if (extension == ".h" || extension == ".cpp") found.push_back(entry.path());
  }
  return found;
}

TEST(Layers, EverySourceHasARow) {
  const auto rows = documented_rows();
  const auto files = sources();
  ASSERT_GT(files.size(), 30U);
  for (const auto& file : files) {
    EXPECT_NE(component_of(file.stem(), rows), "") << file << " is not in docs/architecture.md";
  }
}

TEST(Layers, EveryRowHasASource) {
  const auto rows = documented_rows();
  std::map<std::string, int> missing = rows;
  for (const auto& file : sources()) missing.erase(component_of(file.stem(), rows));
  for (const auto& [name, row] : missing) ADD_FAILURE() << name << " has no source";
}

TEST(Layers, IncludesPointDownwards) {
  const auto rows = documented_rows();
  const std::regex include(R"(#include "(?:kcommon/)?(\w+)\.h")");
  int seen = 0;
  std::smatch match;
  for (const auto& file : sources()) {
    const std::string from = component_of(file.stem(), rows);
    for (const std::string& line : lines_of(file)) {
      if (!std::regex_match(line, match, include)) continue;
      const std::string to = component_of(match[1], rows);
      ++seen;
      if (from == to) continue;
      ASSERT_TRUE(rows.contains(to)) << file << ": " << line;
      EXPECT_GT(rows.at(from), rows.at(to)) << file << ": " << line;
    }
  }
  EXPECT_GT(seen, 50);
}

}  // namespace
}  // namespace CT::Test
