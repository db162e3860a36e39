// SPDX-License-Identifier: MIT
//
// Runs the tool on every golden case of the folder CODETRACE_CASES and compares all that it writes.
// With CODETRACE_UPDATE_CASES=1 in the environment the expected sections are written anew instead.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "case_file.h"
#include "normalise.h"
#include "process.h"
#include "trace_text.h"

namespace CT::Test {
namespace {

constexpr const char* trace_name = "TRACE";

// What a run leaves behind, as the expected sections show it.
struct Outcome {
  std::string standard_output;
  std::string standard_error;
  std::string status;
  std::vector<std::pair<std::string, std::string>> files;  // section name, bytes
};

Outcome run(const CaseFile& golden, const TemporaryFolder& folder) {
  const std::vector<std::string> words = split_command(golden.content("command"));
  const ProcessResult result = run_process(CODETRACE_BINARY, words, folder.path());
  AddressNames names;
  Outcome outcome;
  outcome.standard_output = names.normalise(result.standard_output);
  outcome.standard_error = names.normalise(result.standard_error);
  outcome.status = std::to_string(result.status) + "\n";
  for (const std::string& name : golden.arguments("output")) {
    outcome.files.emplace_back("output " + name, names.normalise(read_file(folder.path() / name)));
  }
  for (const std::string& name : golden.arguments("no-output")) {
    EXPECT_FALSE(std::filesystem::exists(folder.path() / name)) << name << " was written";
  }
  return outcome;
}

void compare(const CaseFile& golden, const Outcome& outcome) {
  EXPECT_EQ(golden.output("stdout"), outcome.standard_output);
  EXPECT_EQ(golden.output("stderr"), outcome.standard_error);
  EXPECT_EQ(golden.has("status") ? golden.output("status") : "0\n", outcome.status);
  for (const auto& [name, bytes] : outcome.files) EXPECT_EQ(golden.output(name), bytes) << name;
}

void update(CaseFile& golden, const Outcome& outcome) {
  golden.set_output("stdout", outcome.standard_output);
  golden.set_output("stderr", outcome.standard_error);
  const bool shows_status = golden.has("status") || outcome.status != "0\n";
  golden.set_output("status", shows_status ? outcome.status : "");
  for (const auto& [name, bytes] : outcome.files) golden.set_output(name, bytes);
}

// The files that the case is run with, one after the other: one for each byte order of its trace,
// or the bytes that the case gives.
std::vector<BuiltTrace> inputs(const CaseFile& golden) {
  if (golden.has("trace")) return build_traces(golden.content("trace"));
  TextScanner scanner(golden.content("file"));
  BuiltTrace input{ByteOrder::little, {}};
  while (!scanner.at_end()) {
    const std::size_t before = input.bytes.size();
    input.bytes += scanner.hex_bytes();
    if (input.bytes.size() == before) scanner.fail("expected hex digits");
  }
  return {input};
}

class GoldenTest : public ::testing::Test {
 public:
  explicit GoldenTest(std::filesystem::path path) : path_(std::move(path)) {}

  void TestBody() override {
    CaseFile golden(read_file(path_));
    ASSERT_TRUE(golden.has("command")) << "the case has no command";
    std::vector<BuiltTrace> traces;
    try {
      traces = inputs(golden);
    } catch (const TextError& error) {
      const std::size_t start = golden.content_line(golden.has("trace") ? "trace" : "file");
      FAIL() << path_.string() << ':' << start + error.line() - 1 << ": " << error.message();
    }
    bool updating = std::getenv("CODETRACE_UPDATE_CASES") != nullptr;
    for (const BuiltTrace& input : traces) {
      SCOPED_TRACE(input.order == ByteOrder::big ? "order big" : "order little");
      const TemporaryFolder folder;
      prepare(golden, folder.path() / trace_name, input.bytes);
      const Outcome outcome = run(golden, folder);
      if (updating) {
        update(golden, outcome);
        write_file(path_, golden.text());
        updating = false;  // the other byte order is held against what this one wrote
      } else {
        compare(golden, outcome);
      }
    }
  }

 private:
  static void prepare(const CaseFile& golden, const std::filesystem::path& trace,
                      const std::string& bytes) {
    if (golden.has("directory")) {
      std::filesystem::create_directory(trace);
    } else if (golden.has("trace") || golden.has("file")) {
      write_file(trace, bytes);
    }
  }

  std::filesystem::path path_;
};

std::vector<std::filesystem::path> find_cases() {
  std::vector<std::filesystem::path> cases;
  for (const auto& entry : std::filesystem::directory_iterator(CODETRACE_CASES)) {
    if (entry.path().extension() == ".case") cases.push_back(entry.path());
  }
  std::sort(cases.begin(), cases.end());
  return cases;
}

void register_case(const std::filesystem::path& path) {
  std::string name = path.stem();
  std::replace(name.begin(), name.end(), '-', '_');  // a dash has a meaning in test filters
  ::testing::RegisterTest("Golden", name.c_str(), nullptr, nullptr, path.c_str(), 1,
                          [path]() -> ::testing::Test* { return new GoldenTest(path); });
}

}  // namespace
}  // namespace CT::Test

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  const auto cases = CT::Test::find_cases();
  if (cases.empty()) {
    std::cerr << "no cases in " << CODETRACE_CASES << '\n';
    return 1;
  }
  for (const auto& path : cases) CT::Test::register_case(path);
  return RUN_ALL_TESTS();
}
