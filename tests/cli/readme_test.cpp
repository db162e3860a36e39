// SPDX-License-Identifier: MIT
//
// Runs the commands of README.md's console blocks and compares what they print. A command stands
// behind "$ "; "./run" and "./cttool" are the tools that were built for the tests.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace CT::Test {
namespace {

struct Example {
  std::string command;
  std::string output;
};

std::vector<Example> examples_of(const std::string& path) {
  std::ifstream file(path);
  std::vector<Example> examples;
  bool in_block = false;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("```")) {
      in_block = line == "```console";
    } else if (in_block && line.starts_with("$ ")) {
      examples.push_back({line.substr(2), {}});
    } else if (in_block) {
      examples.back().output += line + "\n";
    }
  }
  return examples;
}

std::string output_of(std::string command) {
  constexpr std::array<std::pair<std::string_view, const char*>, 2> tools = {
      {{"./run ", CODETRACE_BINARY " "}, {"./cttool ", CODETRACE_COMPANION " "}}};
  for (const auto& [tool, built] : tools) {
    for (std::size_t at = 0; (at = command.find(tool, at)) != std::string::npos;) {
      command.replace(at, tool.size(), built);
    }
  }
  FILE* pipe = popen(("cd '" CODETRACE_ROOT "' && " + command).c_str(), "r");
  std::string output;
  std::array<char, 4096> piece = {};
  while (const std::size_t got = std::fread(piece.data(), 1, piece.size(), pipe)) {
    output.append(piece.data(), got);
  }
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

TEST(Readme, ExamplesPrintWhatTheySay) {
  const std::vector<Example> examples = examples_of(CODETRACE_ROOT "/README.md");
  ASSERT_GE(examples.size(), 2U);
  for (const Example& example : examples) {
    EXPECT_EQ(output_of(example.command), example.output) << example.command;
  }
}

}  // namespace
}  // namespace CT::Test
