// SPDX-License-Identifier: MIT
//
// Traces of real programs, which are no part of the sources: where the folder is missing, these
// tests are skipped, or fail if the environment has CODETRACE_REQUIRE_TRACES=1.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_document.h"
#include "codetrace/render/ct_file_dump.h"
#include "codetrace/render/ct_records_dump.h"
#include "finding_recorder.h"
#include "written.h"

namespace CT::Test {
namespace {

struct RealTrace {
  const char* name;
  std::size_t checkpoints;
  bool big_endian;
};

constexpr RealTrace real_traces[] = {{"small", 3214, false},
                                     {"webapp", 65045, false},
                                     {"cli", 165856, false},
                                     {"unicode-be", 6892, true}};

void PrintTo(const RealTrace& trace, std::ostream* out) { *out << trace.name; }

class Counter final : public Sink {
 public:
  bool write(std::string_view bytes) override {
    taken += bytes.size();
    return true;
  }
  std::size_t taken = 0;
};

class RealTraces : public testing::TestWithParam<RealTrace> {
 protected:
  void SetUp() override {
    const std::filesystem::path folder = CODETRACE_TRACES;
    const std::filesystem::path path = folder / (std::string(GetParam().name) + ".ct");
    if (!std::filesystem::exists(path)) {
      const char* required = std::getenv("CODETRACE_REQUIRE_TRACES");
      if (required != nullptr && std::string_view(required) == "1") {
        FAIL() << "NO REAL TRACE AT " << path << ", and CODETRACE_REQUIRE_TRACES=1";
      }
      GTEST_SKIP() << "NO REAL TRACE AT " << path << ": NOTHING IS TESTED HERE";
    }
    file_ = std::make_unique<File>(QString::fromStdString(path.string()));
    ASSERT_TRUE(file_->open()) << file_->error_message().toStdString();
    storage_ = std::make_unique<Storage>(*file_, &findings_);
  }

  FindingRecorder findings_;
  std::unique_ptr<File> file_;
  std::unique_ptr<Storage> storage_;
};

TEST_P(RealTraces, PrintInEveryFormWithoutAWarning) {
  RecordDumper dumper;
  Counter sink;
  StreamWriter out(sink);
  const auto expect_output = [&] {
    EXPECT_TRUE(out.flush());
    EXPECT_GT(sink.taken, 0U);
    sink.taken = 0;
  };
  write_headers(*file_, out);
  expect_output();
  write_binary(*file_, out);
  expect_output();
  std::size_t checkpoints = 0;
  read_checkpoints(*file_, *storage_, [&](const Checkpoint::Base& record) {
    EXPECT_TRUE(record.is_valid());
    EXPECT_FALSE(record.damage());
    ++checkpoints;
    dumper.write(record, out);
    return true;
  });
  expect_output();
  EXPECT_EQ(checkpoints, GetParam().checkpoints);
  EXPECT_EQ(file_->big_endian(), GetParam().big_endian);
  write_json(*storage_, out);
  expect_output();
  write_text(*storage_, out);
  expect_output();
  EXPECT_THAT(findings_.lines(), testing::IsEmpty());
  EXPECT_TRUE(storage_->summary().is_clean());
  EXPECT_EQ(storage_->summary().records, checkpoints);
}

TEST_P(RealTraces, StreamTheDocumentThatQtPrints) {
  read_checkpoints(*file_, *storage_);
  const std::string streamed = written([&](Writer& out) { write_json(*storage_, out); });
  const QByteArray expected = QJsonDocument(as_json(*storage_)).toJson(QJsonDocument::Indented);
  ASSERT_EQ(streamed.size(), static_cast<std::size_t>(expected.size()) + 1);
  // No EXPECT_EQ, which would print both documents.
  EXPECT_TRUE(std::string_view(streamed).starts_with(
      std::string_view(expected.constData(), static_cast<std::size_t>(expected.size()))));
  EXPECT_EQ(streamed.back(), '\n');
}

TEST_P(RealTraces, HaveALineForEachNode) {
  read_checkpoints(*file_, *storage_);
  const std::string text = written([&](Writer& out) { write_text(*storage_, out); });
  const auto lines = static_cast<Storage::NodeId>(std::count(text.begin(), text.end(), '\n'));
  EXPECT_GE(lines, storage_->node_count());
  EXPECT_EQ(text.substr(0, 17), "REQUEST STARTUP: ");
}

INSTANTIATE_TEST_SUITE_P(All, RealTraces, testing::ValuesIn(real_traces), [](const auto& trace) {
  std::string name = trace.param.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
});

}  // namespace
}  // namespace CT::Test
