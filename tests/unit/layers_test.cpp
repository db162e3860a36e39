// SPDX-License-Identifier: MIT
//
// Holds the #include lines of the sources to the picture of floors in docs/architecture.md, and the
// sources to the tables behind it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace CT::Test {
namespace {

namespace fs = std::filesystem;

const fs::path root = CODETRACE_ROOT;

std::vector<std::string> lines_of(const fs::path& path) {
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

std::set<std::string> words_of(const std::string& text) {
  std::istringstream in(text);
  std::set<std::string> words;
  for (std::string word; in >> word;) words.insert(word);
  return words;
}

struct Floor {
  std::string place;  // a folder, or the name of a component in one
  std::set<std::string> below;
  std::set<std::string> qt;  // headers of Qt; "*" for all

  std::string name() const { return fs::path(place).filename(); }
  bool has(const std::string& file) const {
    return file.starts_with(place) && file.size() > place.size() &&
           std::string("/._").find(file[place.size()]) != std::string::npos;
  }
};

// A line is "place | what lives there | floors that it includes | headers of Qt".
std::vector<Floor> picture() {
  std::vector<Floor> floors;
  bool inside = false;
  for (const std::string& line : lines_of(root / "docs/architecture.md")) {
    if (line.starts_with("```")) inside = line == "```floors";
    if (!inside || !line.starts_with("src/")) continue;
    std::vector<std::string> columns;
    std::istringstream in(line);
    for (std::string column; std::getline(in, column, '|');) columns.push_back(column);
    EXPECT_TRUE(columns.size() == 3 || columns.size() == 4) << line;
    columns.resize(4);
    floors.push_back({*words_of(columns[0]).begin(), words_of(columns[2]), words_of(columns[3])});
  }
  return floors;
}

// The components of each folder by its heading, "### `src/libs/codetrace/bytes`", as the rows
// "| `ct_cursor` | ..." below it name them.
std::map<std::string, std::set<std::string>> tables() {
  std::map<std::string, std::set<std::string>> found;
  std::string folder;
  for (const std::string& line : lines_of(root / "docs/architecture.md")) {
    if (line.starts_with("#")) folder = between(line, "### `", "`");
    const std::string component = between(line, "| `", "` |");
    if (!folder.empty() && line.starts_with("| `")) found[folder].insert(component);
  }
  return found;
}

// All sources, from the root.
std::vector<std::string> sources() {
  std::vector<std::string> found;
  for (const auto& entry : fs::recursive_directory_iterator(root / "src")) {
    const auto extension = entry.path().extension();
    if (extension == ".h" || extension == ".cpp") {
      found.push_back(fs::relative(entry.path(), root).generic_string());
    }
  }
  return found;
}

const Floor* floor_of(const std::vector<Floor>& floors, const std::string& file) {
  const Floor* best = nullptr;
  for (const Floor& floor : floors) {
    if (floor.has(file) && (best == nullptr || floor.place.size() > best->place.size())) {
      best = &floor;
    }
  }
  return best;
}

// The source that an include in quotes means, from the root; empty if there is none.
std::string included_by(const std::string& file, const std::string& name) {
  for (const fs::path& folder :
       {fs::path("src/libs"), fs::path("src"), fs::path(file).parent_path()}) {
    if (fs::exists(root / folder / name)) return (folder / name).generic_string();
  }
  return {};
}

// Calls `check` with each include in quotes: the file that has it, the line, the source it means.
void for_each_include(
    const std::function<void(const std::string&, const std::string&, const std::string&)>& check) {
  for (const std::string& file : sources()) {
    for (const std::string& line : lines_of(root / file)) {
      const std::string name = between(line, "#include \"", "\"");
      if (!name.empty()) check(file, line, included_by(file, name));
    }
  }
}

TEST(Layers, ThePictureIsThere) {
  const auto floors = picture();
  EXPECT_GE(floors.size(), 8U);
  EXPECT_LE(floors.size(), 24U);
  std::set<std::string> below;
  for (const Floor& floor : floors) {
    for (const std::string& other : floor.below) {
      EXPECT_TRUE(below.contains(other)) << floor.place << " stands on " << other;
    }
    EXPECT_TRUE(below.insert(floor.name()).second) << floor.place;
  }
}

TEST(Layers, EverySourceIsOnAFloorAndEveryFloorHasOne) {
  const auto floors = picture();
  const auto files = sources();
  ASSERT_GT(files.size(), 30U);
  std::set<std::string> empty;
  for (const Floor& floor : floors) empty.insert(floor.place);
  for (const std::string& file : files) {
    const Floor* floor = floor_of(floors, file);
    ASSERT_NE(floor, nullptr) << file << " is on no floor of docs/architecture.md";
    empty.erase(floor->place);
  }
  EXPECT_THAT(empty, testing::IsEmpty());
}

TEST(Layers, EveryIncludeMeansASource) {
  int seen = 0;
  for_each_include([&](const std::string& file, const std::string& line, const std::string& to) {
    EXPECT_NE(to, "") << file << ": " << line;
    ++seen;
  });
  EXPECT_GT(seen, 50);
}

TEST(Layers, IncludesPointDownwards) {
  const auto floors = picture();
  for_each_include([&](const std::string& file, const std::string& line, const std::string& to) {
    const Floor* here = floor_of(floors, file);
    const Floor* there = floor_of(floors, to);
    if (here == nullptr || there == nullptr || here == there) return;  // told by the tests above
    EXPECT_TRUE(here->below.contains(there->name())) << file << ": " << line;
  });
}

TEST(Layers, QtIsIncludedWhereThePictureSaysSo) {
  const auto floors = picture();
  for (const std::string& file : sources()) {
    const Floor* floor = floor_of(floors, file);
    for (const std::string& line : lines_of(root / file)) {
      const std::string name = between(line, "#include <", ">");
      if (floor == nullptr || !name.starts_with("Q") || floor->qt.contains("*")) continue;
      EXPECT_TRUE(floor->qt.contains(name)) << file << ": " << line;
      // Who includes the library's headers need not have Qt's JSON classes, nor its strings.
      if (file.starts_with("src/libs/") && file.ends_with(".h") && floor->name() != "ct_file") {
        EXPECT_FALSE(name.starts_with("QJson") || name == "QString") << file << ": " << line;
      }
    }
  }
}

TEST(Layers, NoHeaderIncludesItselfByWayOfOthers) {
  std::map<std::string, std::vector<std::string>> includes;
  for_each_include([&](const std::string& file, const std::string&, const std::string& to) {
    if (file.ends_with(".h")) includes[file].push_back(to);
  });
  for (const auto& [header, direct] : includes) {
    std::set<std::string> seen;
    std::vector<std::string> left = direct;
    while (!left.empty()) {
      const std::string at = left.back();
      left.pop_back();
      if (!seen.insert(at).second) continue;
      const auto more = includes.find(at);
      if (more != includes.end()) left.insert(left.end(), more->second.begin(), more->second.end());
    }
    EXPECT_FALSE(seen.contains(header)) << header;
  }
}

// The component of a file is the longest name in its folder's table that its own begins with.
TEST(Layers, EverySourceHasARowAndEveryRowASource) {
  const auto components = tables();
  std::map<std::string, std::set<std::string>> unused = components;
  for (const std::string& file : sources()) {
    const fs::path path(file);
    const std::string folder = path.parent_path().generic_string();
    const std::string stem = path.stem();
    std::string best;
    if (components.contains(folder)) {
      for (const std::string& name : components.at(folder)) {
        const bool fits = stem == name || stem.starts_with(name + "_");
        if (fits && name.size() > best.size()) best = name;
      }
    }
    EXPECT_NE(best, "") << file << " is in no table of docs/architecture.md";
    unused[folder].erase(best);
  }
  for (const auto& [folder, names] : unused) EXPECT_THAT(names, testing::IsEmpty()) << folder;
}

}  // namespace
}  // namespace CT::Test
