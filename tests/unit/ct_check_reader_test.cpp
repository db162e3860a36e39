// SPDX-License-Identifier: MIT
//
// What a check says of a file agrees with what the reader does with it: on all golden cases, on
// real traces, and on a small trace cut at every byte and with every bit flipped.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "case_file.h"
#include "checked.h"
#include "codetrace/ct_trace.h"
#include "rich_trace.h"
#include "trace_text.h"

namespace CT::Test {
namespace {

namespace fs = std::filesystem;
using Check::Level;
using Check::Result;

std::string figures(const Summary& summary) {
  std::ostringstream text;
  text << summary.records << " records, " << summary.skipped << " skipped, " << summary.damaged
       << " damaged, " << summary.rejected << " rejected, " << summary.repaired << " repaired, "
       << (summary.is_broken ? "broken" : "walked to the end");
  return text.str();
}

void expect_agreement(const std::string& bytes, const std::string& what) {
  const Result result = checked(bytes);
  Trace trace;
  const bool is_open =
      trace.open(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  ASSERT_EQ(result.count(Level::fatal) == 0, is_open) << what;
  if (!is_open) return;
  ASSERT_EQ(figures(result.reader), figures(trace.summary())) << what;
  // Whatever the reader complains about is a defect.
  ASSERT_FALSE(result.is_clean() && !trace.summary().is_clean()) << what;
  const bool has_startup = result.count(Check::Code::no_startup) == 0;
  ASSERT_EQ(trace.node_count() != 0, has_startup) << what;
}

std::string content(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

class CheckAndReaderOf : public testing::TestWithParam<ByteOrder> {};

TEST(CheckAndReader, AgreeOnAllGoldenCases) {
  std::size_t count = 0;
  for (const auto& entry : fs::directory_iterator(fs::path(CODETRACE_ROOT) / "tests" / "cli")) {
    if (entry.path().extension() != ".case") continue;
    const CaseFile golden(content(entry.path()));
    if (!golden.has("trace")) continue;
    for (const BuiltTrace& trace : build_traces(golden.content("trace"))) {
      expect_agreement(trace.bytes, entry.path().filename());
      ++count;
    }
  }
  EXPECT_GT(count, 100U);
}

TEST(CheckAndReader, AgreeOnRealTraces) {
  for (const fs::path& folder :
       {fs::path(CODETRACE_ROOT) / "examples", fs::path(CODETRACE_TRACES)}) {
    if (!fs::exists(folder)) continue;
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.path().extension() == ".ct") {
        expect_agreement(content(entry.path()), entry.path().filename());
      }
    }
  }
}

TEST_P(CheckAndReaderOf, AgreeOnDataCutAtEveryByte) {
  const std::size_t size = rich_trace(GetParam()).data_size();
  for (std::size_t cut = 0; cut <= size; ++cut) {
    TraceBuilder trace = rich_trace(GetParam());
    trace.cut_data(cut);
    expect_agreement(trace.build(), "DATA less " + std::to_string(cut));
  }
}

TEST_P(CheckAndReaderOf, AgreeOnAddDataCutAtEveryByte) {
  const std::size_t size = rich_trace(GetParam()).add_data_size();
  for (std::size_t cut = 0; cut <= size; ++cut) {
    TraceBuilder trace = rich_trace(GetParam());
    trace.cut_add_data(cut);
    expect_agreement(trace.build(), "ADD DATA less " + std::to_string(cut));
  }
}

TEST_P(CheckAndReaderOf, AgreeOnAFileCutAtEveryByte) {
  const std::string bytes = rich_trace(GetParam()).build();
  for (std::size_t size = 0; size != bytes.size(); ++size) {
    const std::string cut = bytes.substr(0, size);
    expect_agreement(cut, "file of " + std::to_string(size));
    const Result result = checked(cut);
    EXPECT_EQ(result.count(Check::Code::size) + result.count(Check::Code::header), 1U) << size;
    // What is missing is said once, not of each reference into it.
    EXPECT_EQ(result.count(Check::Code::ref_range), 0U) << size;
    EXPECT_EQ(result.count(Check::Code::descriptor_end), 0U) << size;
    EXPECT_EQ(result.count(Check::Code::payload_end), 0U) << size;
  }
}

TEST_P(CheckAndReaderOf, AgreeOnEveryBitFlipped) {
  const std::string whole = rich_trace(GetParam()).build();
  for (std::size_t bit = 0; bit != 8 * whole.size(); ++bit) {
    std::string bytes = whole;
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << (bit % 8)));
    expect_agreement(bytes, "bit " + std::to_string(bit));
  }
}

INSTANTIATE_TEST_SUITE_P(InBothOrders, CheckAndReaderOf,
                         testing::Values(ByteOrder::little, ByteOrder::big),
                         [](const testing::TestParamInfo<ByteOrder>& order) {
                           return order.param == ByteOrder::big ? "Big" : "Little";
                         });

}  // namespace
}  // namespace CT::Test
