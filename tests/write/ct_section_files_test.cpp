// SPDX-License-Identifier: MIT
//
// Sections in two files: what they hold while the recording is under way, the file that is made of
// them, and disks that are full.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <csignal>
#include <optional>
#include <string>

#include "temp_file.h"
#include "trace_builder.h"
#include "written_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Type;
using Write::Error;
using Write::TraceWriter;

class SectionFiles : public testing::Test {
 protected:
  void TearDown() override {
    ::close(files.data);
    ::close(files.add_data);
    ::signal(SIGXFSZ, SIG_DFL);
  }

  int open_new(const char* name) const {
    return ::open(path(name).c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  }
  std::string path(const char* name) const {
    return folder.path(QString::fromLatin1(name)).toStdString();
  }
  std::string content(const char* name) const {
    QFile file(QString::fromStdString(path(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
  }
  // The sections as a file that is whole.
  std::string recording() const {
    TraceBuilder builder;
    builder.data(Fields().raw(content("data")));
    builder.add_data(Fields().raw(content("add")));
    return builder.build();
  }

  TempFolder folder;
  Write::SectionFiles files{open_new("data"), open_new("add")};
  Write::Options options = options_of(ByteOrder::little);
};

// A name of its own for each.
std::optional<Write::Reference> write_event(TraceWriter& writer, int number, std::size_t size = 0) {
  const Write::Reference name = writer.text("event " + std::to_string(number));
  writer.begin(Type::USER_EVENT);
  writer.reference(name);
  writer.u32(static_cast<std::uint32_t>(number));
  writer.raw(as_bytes(std::string(size, 'x')));
  return writer.end();
}

void build_event(TraceBuilder& builder, int number, std::size_t size = 0) {
  const Ref name = builder.text("event " + std::to_string(number));
  builder.add(CheckpointDraft::user_event(name, static_cast<std::uint32_t>(number))
                  .more(Fields().raw(std::string(size, 'x'))));
}

TEST_F(SectionFiles, WithoutABufferEachRecordIsThereAtItsEnd) {
  files.buffer = 0;
  TraceWriter writer(options, files);
  TraceBuilder expected;
  for (int number = 0; number != 20; ++number) {
    ASSERT_TRUE(write_event(writer, number));
    build_event(expected, number);
    EXPECT_EQ(recording(), expected.build());
  }
  writer.begin(Type::USER_EVENT);
  writer.reference(writer.text("never ended"));
  EXPECT_EQ(recording(), expected.build());
  EXPECT_FALSE(writer.flush());
  EXPECT_EQ(writer.error(), Error::record_open);
  writer.abandon();
  EXPECT_TRUE(writer.flush());
  expected.text("never ended");
  EXPECT_EQ(recording(), expected.build());
  EXPECT_EQ(finished(writer), expected.build());
}

TEST_F(SectionFiles, WhatIsInTheFilesIsWholeAndReferencesAreGood) {
  files.buffer = 100;
  TraceWriter writer(options, files);
  TraceBuilder expected;
  std::string whole = expected.build();
  int changes = 0;
  for (int number = 0; number != 50; ++number) {
    ASSERT_TRUE(write_event(writer, number));
    build_event(expected, number);
    if (recording() == whole) continue;
    whole = recording();
    EXPECT_EQ(whole, expected.build());
    ++changes;
  }
  EXPECT_GT(changes, 5);
  EXPECT_LT(changes, 25);
  EXPECT_EQ(finished(writer), expected.build());
  EXPECT_EQ(writer.data_size(), expected.data_size());
  EXPECT_TRUE(writer.flush());
  EXPECT_EQ(recording(), expected.build());
}

TEST_F(SectionFiles, RecordsBeyondTheBufferGoThrough) {
  TraceWriter writer(options, files);
  TraceBuilder expected;
  for (int number = 0; number != 5; ++number) {
    ASSERT_TRUE(write_event(writer, number, 100'000));
    build_event(expected, number, 100'000);
  }
  EXPECT_EQ(content("data").size(), expected.data_size());
  EXPECT_TRUE(finished(writer) == expected.build());
}

TEST_F(SectionFiles, ADescriptorTakesTheFile) {
  TraceWriter writer(options, files);
  ASSERT_TRUE(write_event(writer, 1));
  const int out = open_new("out");
  Write::DescriptorDestination destination(out);
  EXPECT_TRUE(writer.finish(destination));
  ::close(out);
  EXPECT_EQ(content("out"), finished(writer));
}

TEST_F(SectionFiles, ADeviceIsFull) {
  const int full = ::open("/dev/full", O_RDWR | O_CLOEXEC);
  ASSERT_GE(full, 0);
  for (const bool data_is_full : {false, true}) {
    const Write::SectionFiles one_full = {data_is_full ? full : files.data,
                                          data_is_full ? files.add_data : full, 0};
    TraceWriter writer(options, one_full);
    EXPECT_FALSE(write_event(writer, 1));
    EXPECT_EQ(writer.error(), Error::lost);
    EXPECT_EQ(writer.system_error(), ENOSPC);
    EXPECT_EQ(writer.data_size(), 0U);
    EXPECT_FALSE(writer.flush() && !data_is_full);
  }
  TraceWriter writer(options);
  Write::DescriptorDestination destination(full);
  EXPECT_FALSE(writer.finish(destination));
  EXPECT_EQ(writer.system_error(), ENOSPC);
  ::close(full);
}

// Files of this process may have so many bytes; more is EFBIG.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    ::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_ = {};
};

TEST_F(SectionFiles, AFullDiskCostsTheRecordsThatDoNotFit) {
  files.buffer = 0;
  TraceWriter writer(options, files);
  TraceBuilder expected;
  const std::size_t size = 300;
  ASSERT_TRUE(write_event(writer, 1, size));
  build_event(expected, 1, size);
  {
    const FileSizeLimit limit(500);
    EXPECT_FALSE(write_event(writer, 2, size));
    EXPECT_EQ(writer.error(), Error::lost);
    EXPECT_EQ(writer.system_error(), EFBIG);
    // No half of it is left; its name is, which nothing refers to.
    expected.text("event 2");
    EXPECT_EQ(recording(), expected.build());
    // A smaller one fits.
    EXPECT_TRUE(write_event(writer, 3, 10));
    build_event(expected, 3, 10);
    EXPECT_EQ(recording(), expected.build());
  }
  EXPECT_TRUE(write_event(writer, 4, size));
  build_event(expected, 4, size);
  EXPECT_EQ(recording(), expected.build());
  EXPECT_EQ(finished(writer), expected.build());
}

TEST_F(SectionFiles, WhatIsInTheBufferSurvivesAFullDisk) {
  files.buffer = 200;
  TraceWriter writer(options, files);
  TraceBuilder expected;
  ASSERT_TRUE(write_event(writer, 1, 10));
  build_event(expected, 1, 10);
  {
    const FileSizeLimit limit(20);
    EXPECT_FALSE(write_event(writer, 2, 250));
    EXPECT_FALSE(writer.flush());
    EXPECT_EQ(writer.error(), Error::lost);
    expected.text("event 2");
    EXPECT_EQ(finished(writer), expected.build());
  }
  EXPECT_TRUE(writer.flush());
  EXPECT_EQ(recording(), expected.build());
  EXPECT_EQ(finished(writer), expected.build());
}

TEST_F(SectionFiles, AFileThatSomebodyShortensIsMissed) {
  files.buffer = 0;
  TraceWriter writer(options, files);
  ASSERT_TRUE(write_event(writer, 1));
  ASSERT_EQ(::ftruncate(files.data, 3), 0);
  StringDestination destination;
  EXPECT_FALSE(writer.finish(destination));
  EXPECT_EQ(writer.error(), Error::lost);
  EXPECT_EQ(writer.system_error(), EIO);
}

// A process that is killed between two records, or within one.
TEST_F(SectionFiles, OfAProcessThatDiesTheSectionsAreLeft) {
  files.buffer = 0;
  const pid_t child = ::fork();
  if (child == 0) {
    TraceWriter writer(options, files);
    for (int number = 0; number != 3; ++number) write_event(writer, number);
    writer.begin(Type::USER_EVENT);
    writer.reference(writer.text("half"));
    ::kill(::getpid(), SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  TraceBuilder expected;
  for (int number = 0; number != 3; ++number) build_event(expected, number);
  EXPECT_EQ(recording(), expected.build());
}

}  // namespace
}  // namespace CT::Test
