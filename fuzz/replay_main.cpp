// SPDX-License-Identifier: MIT
//
// Runs a fuzz target on each file that is named on the command line, and on all files of each
// folder. A finding ends it as it would end the fuzzer; nothing to run is an error too.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> files_of(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file) return false;
  // Of the exact size, so that a sanitizer sees one byte too many.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& path : files_of(argv[i])) {
      if (!replay(path)) {
        CT::Fuzz::report("cannot read " + path.string() + "\n");
        return 1;
      }
      ++count;
    }
  }
  CT::Fuzz::report(std::to_string(count) + " inputs replayed\n");
  return count != 0 ? 0 : 1;
}
