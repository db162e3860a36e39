// SPDX-License-Identifier: MIT
//
// The programs of examples/api, run on traces; what they print stands in the .expected files.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "process.h"
#include "trace_text.h"

namespace CT::Test {
namespace {

const std::filesystem::path cases = CODETRACE_ROOT "/tests/api";

class ApiExample : public ::testing::Test {
 protected:
  // Writes the trace that a .trace file describes, in one byte order.
  void write_trace(const std::string& name, ByteOrder order) {
    for (const BuiltTrace& trace : build_traces(read_file(cases / (name + ".trace")))) {
      if (trace.order == order) write_file(folder_.path() / (name + ".ct"), trace.bytes);
    }
  }

  ProcessResult run(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return run_process(std::filesystem::path(CODETRACE_EXAMPLES) / program, words, folder_.path());
  }

  void expect_output(const ProcessResult& result, const std::string& expected) {
    EXPECT_EQ(result.standard_output, read_file(cases / expected));
    EXPECT_EQ(result.standard_error, "");
    EXPECT_EQ(result.status, 0);
  }

  TemporaryFolder folder_;
};

TEST_F(ApiExample, PrintsWhatItsFileSays) {
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    write_trace("shop", order);
    write_trace("shop_mended", order);
    for (const std::string program : {"slowest_calls", "top_functions", "sql_calls", "response"}) {
      SCOPED_TRACE(program);
      expect_output(run(program, {"shop.ct"}), program + ".expected");
    }
    expect_output(run("compare", {"shop.ct", "shop_mended.ct"}), "compare.expected");
  }
}

TEST_F(ApiExample, ReadsARealTrace) {
  const std::string notes = CODETRACE_ROOT "/examples/notes.ct";
  expect_output(run("top_functions", {notes}), "top_functions_of_notes.expected");
  EXPECT_EQ(run("sql_calls", {notes}).standard_output, "");
  const std::string response = run("response", {notes}).standard_output;
  EXPECT_TRUE(
      response.starts_with("Status: 203\nContent-Type: text/html; charset=utf-8\n"
                           "X-Notes: 3\n\n<!DOCTYPE html>\n"));
}

TEST_F(ApiExample, SaysWhatIsDamagedAndGoesOn) {
  write_trace("shop", ByteOrder::little);
  const std::string whole = read_file(folder_.path() / "shop.ct");
  // The lowest byte of the first header word: a type that does not exist.
  std::string damaged = whole;
  damaged[36] = '\x1f';
  write_file(folder_.path() / "damaged.ct", damaged);
  const ProcessResult result = run("response", {"damaged.ct"});
  EXPECT_NE(result.standard_error.find("Invalid checkpoint type 18"), std::string::npos);
  EXPECT_EQ(result.status, 0);
}

TEST_F(ApiExample, FailsWithAMessage) {
  for (const std::string program : {"slowest_calls", "top_functions", "sql_calls", "response"}) {
    const ProcessResult result = run(program, {"missing.ct"});
    EXPECT_EQ(result.standard_error, "missing.ct: No such file or directory\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(run(program, {}).standard_error, "Usage: " + program + " TRACE\n");
    EXPECT_EQ(run(program, {}).status, 1);
  }
  write_trace("shop", ByteOrder::little);
  const ProcessResult result = run("compare", {"shop.ct", "missing.ct"});
  EXPECT_EQ(result.standard_error, "missing.ct: No such file or directory\n");
  EXPECT_EQ(result.standard_output, "");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(run("compare", {"shop.ct"}).standard_error, "Usage: compare OLD NEW\n");
}

}  // namespace
}  // namespace CT::Test
