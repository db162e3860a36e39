// SPDX-License-Identifier: MIT
//
// Holds the #include lines of the sources to the table of layers in docs/architecture.md.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
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

// What stands between the first `before` and the next `after`; empty if it is not there.
std::string between(const std::string& line, const std::string& before, const std::string& after) {
  const std::size_t begin = line.find(before);
  if (begin == std::string::npos) return {};
  const std::size_t end = line.find(after, begin + before.size());
  if (end == std::string::npos) return {};
  return line.substr(begin + before.size(), end - begin - before.size());
}

// Component to row, as "| 3 | `ct_json` | ..." says.
std::map<std::string, int> documented_rows() {
  std::map<std::string, int> rows;
  for (const std::string& line : lines_of(root / "docs/architecture.md")) {
    const std::string row = between(line, "| ", " | `");
    const std::string component = between(line, " | `", "` | ");
    if (row.empty() || component.empty()) continue;
    if (row.find_first_not_of("0123456789") == std::string::npos) rows[component] = std::stoi(row);
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
  int seen = 0;
  for (const auto& file : sources()) {
    const std::string from = component_of(file.stem(), rows);
    for (const std::string& line : lines_of(file)) {
      const std::filesystem::path included = between(line, "#include \"", ".h\"");
      if (included.empty()) continue;
      const std::string to = component_of(included.filename(), rows);
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
