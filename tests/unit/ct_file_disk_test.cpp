// SPDX-License-Identifier: MIT
//
// What concerns a trace on disk alone: its name, its state from one opening to the next, what the
// log says when it is refused.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <fstream>
#include <string>
#include <vector>

#include "codetrace/ct_file.h"
#include "file_lines.h"
#include "log_recorder.h"
#include "open_trace.h"
#include "temp_file.h"
#include "trace_builder.h"

namespace CT::Test {
namespace {

class FileOnDisk : public ::testing::Test {
 protected:
  QString path(const char* name) const { return folder_.path(QString::fromUtf8(name)); }
  QString file(const char* name, std::string_view bytes) const {
    return folder_.file(QString::fromUtf8(name), bytes);
  }
  std::string error_of(const QString& path) {
    File file(path);
    told_.clear();
    file.set_log(told_.log());
    EXPECT_FALSE(file.open());
    EXPECT_FALSE(file.is_open());
    return file.error_message().toStdString();
  }

  const TempFolder folder_;
  FileLines told_;
};

// An open descriptor of a path.
class Descriptor {
 public:
  explicit Descriptor(const QString& path)
      : number_(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC)) {}
  ~Descriptor() { ::close(number_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

bool is_same(const File& file, const QString& path) {
  return file.is_same_file(Descriptor(path).number());
}

TEST_F(FileOnDisk, AMissingOneIsRefusedInTheWordsOfTheSystem) {
  EXPECT_EQ(error_of(path("missing")), "No such file or directory");
  EXPECT_EQ(error_of(path("missing/trace")), "No such file or directory");
}

TEST_F(FileOnDisk, AFolderIsRefusedInTheWordsOfQt) {
  EXPECT_EQ(error_of(path(".")), "file to open is a directory");
}

TEST_F(FileOnDisk, APathThroughAFileIsRefused) {
  EXPECT_EQ(error_of(file("plain", "x") + QStringLiteral("/trace")), "Not a directory");
}

TEST_F(FileOnDisk, ANameInUnicodeIsFound) {
  File file(
      this->file("tr\xC3\xA4"
                 "ce \xF0\x9F\x98\x80",
                 TraceBuilder().build()));
  EXPECT_TRUE(file.open());
}

TEST_F(FileOnDisk, OneThatTheKernelMakesUpIsReadToItsEnd) {
  const std::string error = error_of(QStringLiteral("/proc/self/status"));
  EXPECT_EQ(error, "Invalid Code Trace dump file magic");
}

TEST_F(FileOnDisk, AnEndlessOneIsRefusedByItsFirstBytes) {
  EXPECT_EQ(error_of(QStringLiteral("/dev/zero")), "Invalid Code Trace dump file magic");
}

TEST_F(FileOnDisk, OpeningAgainReadsWhatIsThereNow) {
  TraceBuilder first(ByteOrder::big);
  first.data(Fields().raw("abc"));
  first.text("x");
  File file(this->file("trace", first.build()));
  ASSERT_TRUE(file.open());
  TraceBuilder second;
  second.data(Fields().raw("de"));
  this->file("trace", second.build());
  ASSERT_TRUE(file.open());
  EXPECT_EQ(std::string(Section::as_chars(file.data().data()), file.data().size()), "de");
  EXPECT_EQ(file.add_data().data(), nullptr);
  EXPECT_FALSE(file.big_endian());
}

TEST_F(FileOnDisk, AFailedOpeningForgetsTheOneBefore) {
  TraceBuilder trace(ByteOrder::big);
  trace.set_request_id(7);
  trace.data(Fields().raw("abc"));
  File file(this->file("trace", trace.build()));
  ASSERT_TRUE(file.open());
  QFile::remove(file.name());
  EXPECT_FALSE(file.open());
  EXPECT_FALSE(file.is_open());
  EXPECT_EQ(file.data().data(), nullptr);
  EXPECT_EQ(file.data().size(), 0U);
  EXPECT_EQ(file.header().request_id, 0U);
  EXPECT_EQ(file.header().version, 1);
  EXPECT_EQ(std::string(file.header().magic, 2), "CT");
  this->file("trace", "");
  EXPECT_FALSE(is_same(file, path("trace")));
}

TEST_F(FileOnDisk, ASuccessForgetsTheErrorBefore) {
  File file(this->file("trace", "XY"));
  EXPECT_FALSE(file.open());
  EXPECT_FALSE(file.error_message().isEmpty());
  this->file("trace", TraceBuilder().build());
  EXPECT_TRUE(file.open());
  EXPECT_TRUE(file.error_message().isEmpty());
}

TEST_F(FileOnDisk, IsTheSameFileByWhateverName) {
  File file(this->file("trace", TraceBuilder().build()));
  EXPECT_FALSE(is_same(file, path("trace"))) << "before it was opened";
  ASSERT_TRUE(file.open());
  ASSERT_TRUE(QFile::link(path("trace"), path("link")));
  this->file("other", TraceBuilder().build());
  EXPECT_TRUE(is_same(file, path("trace")));
  EXPECT_TRUE(is_same(file, path("./trace")));
  EXPECT_TRUE(is_same(file, path("link")));
  EXPECT_FALSE(is_same(file, path("other")));
  EXPECT_FALSE(is_same(file, path("."))) << "a folder";
  EXPECT_FALSE(file.is_same_file(-1));
}

TEST_F(FileOnDisk, IsTheSameFileWhateverBecomesOfItsName) {
  File file(this->file("trace", TraceBuilder().build()));
  ASSERT_TRUE(file.open());
  const Descriptor before(path("trace"));
  ASSERT_TRUE(QFile::rename(path("trace"), path("elsewhere")));
  this->file("trace", TraceBuilder().build());
  EXPECT_TRUE(file.is_same_file(before.number()));
  EXPECT_FALSE(is_same(file, path("trace")));
}

TEST_F(FileOnDisk, BytesFromMemoryAreNoFileOnDisk) {
  const QString name = file("trace", TraceBuilder().build());
  File file(name);
  const std::string bytes = TraceBuilder().build();
  ASSERT_TRUE(file.open(as_bytes(bytes), bytes.size()));
  EXPECT_FALSE(is_same(file, name));
}

TEST_F(FileOnDisk, ANameThatBeginsWithAColonIsAName) {
  const QString folder = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder_.path(QStringLiteral("."))));
  std::ofstream(":trace", std::ios::binary) << TraceBuilder().build();
  File file(QStringLiteral(":trace"));
  EXPECT_TRUE(file.open());
  EXPECT_EQ(error_of(QStringLiteral(":missing")), "No such file or directory");
  QDir::setCurrent(folder);
}

TEST_F(FileOnDisk, AnEmptyNameIsRefused) { EXPECT_EQ(error_of({}), "No file name specified"); }

TEST_F(FileOnDisk, AMissingOneIsToldAsFarAsItCame) {
  error_of(path("missing"));
  EXPECT_EQ(told_.lines(),
            std::vector<std::string>{"4 Opening Code Trace file " + path("missing").toStdString()});
}

// Though a file that is no trace need not be read to its end, its size is known.
TEST_F(FileOnDisk, TheSizeOfOneThatIsRefusedIsTold) {
  TraceBuilder trace;
  trace.data(Fields().raw("abcd"));
  for (const char* magic : {"XY", "CT"}) {
    trace.set_magic(magic);
    trace.set_version(2);
    const QString name = file("trace", trace.build());
    error_of(name);
    EXPECT_EQ(told_.lines().at(2),
              "4 Read 40 bytes of data from the Code Trace file " + name.toStdString());
  }
  trace.append_to_file("surplus");
  const QString name = file("trace", trace.build());
  error_of(name);
  EXPECT_EQ(told_.lines().at(2),
            "4 Read 47 bytes of data from the Code Trace file " + name.toStdString());
}

TEST_F(FileOnDisk, NothingIsLoggedUnlessSomebodyAsks) {
  const LogRecorder log(127);
  File file(this->file("trace", TraceBuilder().build()));
  EXPECT_TRUE(file.open());
  EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace CT::Test
