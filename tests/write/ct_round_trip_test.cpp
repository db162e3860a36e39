// SPDX-License-Identifier: MIT
//
// Traces that were read and written again: every output is the same, and so is every byte where
// there was no choice. Real traces are no part of the sources: where their folder is missing, these
// tests are skipped, or fail if the environment has CODETRACE_REQUIRE_TRACES=1.
#include <gtest/gtest.h>

#include <QString>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "case_file.h"
#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_document.h"
#include "codetrace/render/ct_records_dump.h"
#include "random_trace.h"
#include "rewriter.h"
#include "rich_trace.h"
#include "trace_text.h"
#include "written.h"
#include "written_trace.h"

namespace CT::Test {
namespace {

namespace fs = std::filesystem;

// The dump without places in memory: of checkpoints before this one it has their number instead.
std::string without_addresses(std::string_view dump) {
  std::map<std::string_view, std::size_t> numbers;
  std::string result;
  result.reserve(dump.size());
  while (!dump.empty()) {
    const std::string_view line = dump.substr(0, dump.find('\n') + 1);
    dump.remove_prefix(line.size());
    const bool begins = line.starts_with("*** CHECKPOINT ");
    const bool refers = line.starts_with("\tSTART: ");
    const std::size_t at = line.find("0x");
    if (at == std::string_view::npos || !(begins || refers || line.starts_with("\t\tCE: "))) {
      result += line;
      continue;
    }
    const std::size_t end = line.find_first_not_of("0123456789abcdef", at + 2);
    const std::string_view address = line.substr(at, end - at);
    if (begins) numbers.emplace(address, numbers.size());
    const auto number = numbers.find(address);
    const bool is_before =
        number != numbers.end() && (begins || number->second + 1 < numbers.size());
    result.append(line.substr(0, at));
    result += is_before ? std::to_string(number->second) : "?";
    result.append(line.substr(end));
  }
  return result;
}

struct Outputs {
  std::string json;
  std::string text;
  std::string dump;
};

std::unique_ptr<File> open_file(std::string_view bytes) {
  auto file = std::make_unique<File>(QString());
  const std::span<const unsigned char> span = as_bytes(bytes);
  EXPECT_TRUE(file->open(span.data(), span.size())) << file->error_message().toStdString();
  return file;
}

Outputs outputs_of(const File& file) {
  Storage storage(file, nullptr);
  RecordDumper dumper;
  Outputs outputs;
  outputs.dump = without_addresses(written([&](Writer& out) {
    read_checkpoints(file, storage, [&](const Checkpoint::Base& record) {
      dumper.write(record, out);
      return true;
    });
  }));
  outputs.json = written([&](Writer& out) { write_json(storage, out); });
  outputs.text = written([&](Writer& out) { write_text(storage, out); });
  return outputs;
}

// Not EXPECT_EQ, which would print all of both.
void expect_same(std::string_view what, std::string_view ours, std::string_view expected) {
  if (ours == expected) return;
  std::size_t at = 0;
  while (at < ours.size() && at < expected.size() && ours[at] == expected[at]) ++at;
  const std::size_t from = at - std::min<std::size_t>(at, 200);
  ADD_FAILURE() << what << " differs at " << at << "\nours:     " << ours.substr(from, 400)
                << "\nexpected: " << expected.substr(from, 400);
}

void expect_same_outputs(const File& file, std::string_view bytes) {
  const Outputs expected = outputs_of(file);
  const std::unique_ptr<File> again = open_file(bytes);
  ASSERT_TRUE(again->is_open());
  const Outputs ours = outputs_of(*again);
  expect_same("the JSON document", ours.json, expected.json);
  expect_same("the text", ours.text, expected.text);
  expect_same("the dump", ours.dump, expected.dump);
}

std::vector<fs::path> traces_in(const fs::path& folder) {
  std::vector<fs::path> found;
  if (!fs::exists(folder)) return found;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == ".ct") found.push_back(entry.path());
  }
  std::sort(found.begin(), found.end());
  return found;
}

void expect_round_trips(const fs::path& path) {
  SCOPED_TRACE(path.filename());
  File file(QString::fromStdString(path.string()));
  ASSERT_TRUE(file.open());
  const std::optional<std::string> anew = rewritten(file, Rewriting::anew);
  ASSERT_TRUE(anew);
  expect_same_outputs(file, *anew);
  const std::optional<std::string> as_before = rewritten(file, Rewriting::as_before);
  ASSERT_TRUE(as_before);
  const std::unique_ptr<File> again = open_file(*as_before);
  const auto bytes_of = [](const Section& section) {
    return std::string_view(Section::as_chars(section.data()), section.size());
  };
  expect_same("DATA", bytes_of(again->data()), bytes_of(file.data()));
  expect_same("ADD DATA", bytes_of(again->add_data()), bytes_of(file.add_data()));
}

TEST(RoundTrip, ExamplesAreTheSame) {
  const std::vector<fs::path> paths = traces_in(fs::path(CODETRACE_ROOT) / "examples");
  ASSERT_FALSE(paths.empty());
  for (const fs::path& path : paths) expect_round_trips(path);
}

TEST(RoundTrip, RealTracesAreTheSame) {
  const std::vector<fs::path> paths = traces_in(CODETRACE_TRACES);
  if (paths.empty()) {
    const char* const required = std::getenv("CODETRACE_REQUIRE_TRACES");
    ASSERT_FALSE(required != nullptr && std::string_view(required) == "1") << CODETRACE_TRACES;
    GTEST_SKIP() << "NO REAL TRACES AT " << CODETRACE_TRACES << ": NOTHING IS TESTED HERE";
  }
  for (const fs::path& path : paths) expect_round_trips(path);
}

TEST(RoundTrip, ATraceWithSomethingOfEverythingIsTheSame) {
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    const std::string bytes = rich_trace(order).build();
    const std::unique_ptr<File> file = open_file(bytes);
    const std::optional<std::string> anew = rewritten(*file, Rewriting::anew);
    ASSERT_TRUE(anew);
    expect_same_outputs(*file, *anew);
  }
}

// Whether the trace can be taken apart; one that is damaged cannot.
bool round_trips(const std::string& bytes) {
  File file{QString()};
  const std::span<const unsigned char> span = as_bytes(bytes);
  if (!file.open(span.data(), span.size())) return false;
  const std::optional<std::string> anew = rewritten(file, Rewriting::anew);
  if (!anew) return false;
  expect_same_outputs(file, *anew);
  const std::optional<std::string> as_before = rewritten(file, Rewriting::as_before);
  EXPECT_TRUE(as_before);
  if (as_before) expect_same_outputs(file, *as_before);
  return true;
}

// Of the golden cases of the tool, but for the deep ones: the indentation of their JSON documents
// grows with the square of the depth.
TEST(RoundTrip, TracesOfCasesAreTheSame) {
  constexpr std::size_t most_bytes = 4096;
  std::size_t tested = 0;
  for (const auto& entry : fs::directory_iterator(fs::path(CODETRACE_ROOT) / "tests/cli")) {
    if (entry.path().extension() != ".case") continue;
    SCOPED_TRACE(entry.path().filename());
    std::ifstream in(entry.path(), std::ios::binary);
    const CaseFile golden(std::string(std::istreambuf_iterator<char>(in), {}));
    for (const BuiltTrace& trace : build_traces(golden.content("trace"))) {
      if (trace.bytes.size() < most_bytes && round_trips(trace.bytes)) ++tested;
    }
  }
  RecordProperty("tested", static_cast<int>(tested));
  EXPECT_GT(tested, 80U);
}

TEST(RoundTrip, RandomTracesAreTheSame) {
  const char* const wanted = std::getenv("CODETRACE_ROUND_TRIPS");
  const std::uint64_t count = wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 4000;
  std::uint64_t tested = 0;
  for (std::uint64_t number = 0; number != count && !HasFailure(); ++number) {
    SCOPED_TRACE(number);
    if (round_trips(random_trace(13, number, false))) ++tested;
  }
  RecordProperty("tested", static_cast<int>(tested));
  EXPECT_GT(tested, count / 6);
}

}  // namespace
}  // namespace CT::Test
