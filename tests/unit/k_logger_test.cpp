// SPDX-License-Identifier: MIT
#include "kcommon/k_logger.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Line {
  KLogger::Level level;
  std::string file;
  int line;
  std::string text;
};

class Recorder final : public KLogger::Sink {
 public:
  explicit Recorder(std::vector<Line>& lines) : lines_(lines) {}
  void println(KLogger::Level level, const char* file, int line, std::string_view text) override {
    lines_.push_back({level, file, line, std::string(text)});
  }

 private:
  std::vector<Line>& lines_;
};

// An argument that tells whether it was formatted.
struct Witness {
  bool* formatted;
};

}  // namespace

template <>
struct fmt::formatter<Witness> : fmt::formatter<fmt::string_view> {
  template <class Context>
  auto format(const Witness& witness, Context& context) const {
    *witness.formatted = true;
    return fmt::formatter<fmt::string_view>::format("seen", context);
  }
};

namespace {

class Logger : public ::testing::Test {
 protected:
  Logger() { KLogger::destroyInstance(); }
  ~Logger() override { KLogger::destroyInstance(); }
  void record(KLogger::Level level = 1) {
    KLogger::instance().addSink(std::make_unique<Recorder>(lines_), level);
  }

  std::vector<Line> lines_;
};

TEST_F(Logger, StartsAtVerbosityOne) {
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 1);
  record();
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 1);
}

TEST_F(Logger, ASinksLevelRaisesTheVerbosityAndNeverLowersIt) {
  record(4);
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 4);
  record(0);
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 4);
}

TEST_F(Logger, EachIncreaseIsOneStep) {
  KLogger::instance().increaseMaxVerbosity("");
  KLogger::instance().increaseMaxVerbosity({});
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 3);
}

TEST_F(Logger, AnIncreaseMayNameItsSteps) {
  KLogger::instance().increaseMaxVerbosity("5");
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 6);
  for (const char* const text : {"0", "-1", "x", "3x", " 3"}) {
    KLogger::instance().increaseMaxVerbosity(text);
    EXPECT_EQ(KLogger::instance().maxVerbosity(), 6) << text;
  }
}

TEST_F(Logger, TheVerbosityStaysAtItsHighest) {
  KLogger::instance().increaseMaxVerbosity("125");
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 126);
  for (const char* const text : {"", "", "200", "4294967296"}) {
    KLogger::instance().increaseMaxVerbosity(text);
    EXPECT_EQ(KLogger::instance().maxVerbosity(), 127) << text;
  }
}

TEST_F(Logger, AdmitsLevelsUpToTheVerbosity) {
  record();
  EXPECT_TRUE(KLogger::instance().enabled(0));
  EXPECT_TRUE(KLogger::instance().enabled(1));
  EXPECT_FALSE(KLogger::instance().enabled(2));
  klog(1, "kept");
  klog(2, "dropped");
  KLogger::instance().println(2, "file", 1, "dropped");
  KLogger::instance().increaseMaxVerbosity({});
  klog(2, "kept too");
  ASSERT_EQ(lines_.size(), 2U);
  EXPECT_EQ(lines_[0].text, "kept");
  EXPECT_EQ(lines_[0].level, 1);
  EXPECT_EQ(lines_[1].text, "kept too");
  EXPECT_EQ(lines_[1].level, 2);
}

TEST_F(Logger, AdmitsNothingWithoutASink) {
  EXPECT_FALSE(KLogger::instance().enabled(0));
  bool formatted = false;
  klog(0, "{}", Witness{&formatted});
  EXPECT_FALSE(formatted);
}

TEST_F(Logger, FormatsOnlyWhatIsAdmitted) {
  record();
  bool formatted = false;
  klog(2, "{}", Witness{&formatted});
  EXPECT_FALSE(formatted);
  klog(1, "{}", Witness{&formatted});
  EXPECT_TRUE(formatted);
}

TEST_F(Logger, FillsPlaceholders) {
  record();
  klog(0, "type {} flags 0x{:02x} at {}", 16, 10, static_cast<const void*>(nullptr));
  ASSERT_EQ(lines_.size(), 1U);
  EXPECT_EQ(lines_[0].text, "type 16 flags 0x0a at 0x0");
}

TEST_F(Logger, NamesThePlaceOfTheCall) {
  record();
  klog(0, "here");
  const int line = __LINE__ - 1;
  ASSERT_EQ(lines_.size(), 1U);
  EXPECT_EQ(lines_[0].file, __FILE__);
  EXPECT_EQ(lines_[0].line, line);
}

TEST_F(Logger, LogsTheReasonWhenAMessageCannotBeFormatted) {
  record();
  KLogger::instance().printf(1, "some.cpp", 42, "{:d} is no number", "text");
  KLogger::instance().printf(0, "other.cpp", 43, "{} and {}", 1);
  ASSERT_EQ(lines_.size(), 2U);
  EXPECT_EQ(lines_[0].text.rfind("Failed to format message: ", 0), 0U) << lines_[0].text;
  EXPECT_GT(lines_[0].text.size(), std::string("Failed to format message: ").size());
  EXPECT_EQ(lines_[0].level, 1);
  EXPECT_EQ(lines_[0].file, "some.cpp");
  EXPECT_EQ(lines_[0].line, 42);
  EXPECT_EQ(lines_[1].text, "Failed to format message: argument not found");
}

TEST_F(Logger, EverySinkGetsEveryLine) {
  std::vector<Line> others;
  record();
  KLogger::instance().addSink(std::make_unique<Recorder>(others), 1);
  klog(0, "twice");
  EXPECT_EQ(lines_.size(), 1U);
  EXPECT_EQ(others.size(), 1U);
}

TEST_F(Logger, StartsAfreshOnceDestroyed) {
  record(5);
  KLogger::destroyInstance();
  klog(0, "lost");
  EXPECT_TRUE(lines_.empty());
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 1);
}

TEST_F(Logger, StaysWhereItIsWhenItIsDestroyed) {
  KLogger& logger = KLogger::instance();
  record(5);
  KLogger::destroyInstance();
  KLogger::destroyInstance();
  EXPECT_EQ(&KLogger::instance(), &logger);
  EXPECT_FALSE(logger.enabled(0));
  record();
  klog(0, "after");
  EXPECT_EQ(lines_.size(), 1U);
}

TEST_F(Logger, ASinkMayLogWhileItIsDestroyed) {
  struct LastWord final : KLogger::Sink {
    ~LastWord() override { klog(0, "to nobody"); }
    void println(KLogger::Level, const char*, int, std::string_view) override {}
  };
  KLogger::instance().addSink(std::make_unique<LastWord>(), 1);
  record();
  KLogger::destroyInstance();
  EXPECT_TRUE(lines_.empty());
}

TEST_F(Logger, NoSinkIsAddedByNone) {
  KLogger::instance().addSink(nullptr, 5);
  EXPECT_FALSE(KLogger::instance().enabled(0));
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 1);
  klog(0, "lost");
}

// An object that was there before the logger, and so is destroyed behind it.
struct AtExit {
  ~AtExit() { klog(0, "the last line"); }
};

TEST(LoggerDeathTest, LogsUntilTheProcessEnds) {
  const auto log_at_exit = [] {
    static const AtExit last;
    KLogger::instance().addSink(std::make_unique<KLogger::StdOutSink>(stdout, stderr, stdout), 1);
    std::exit(0);
  };
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(log_at_exit(), ::testing::ExitedWithCode(0), "error: the last line");
}

class StdOutSink : public Logger {
 protected:
  StdOutSink() {
    KLogger::instance().addSink(std::make_unique<KLogger::StdOutSink>(stdout, stderr, stdout), 127);
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
  }
};

TEST_F(StdOutSink, SaysTheLevelAndFromThreeOnThePlace) {
  for (KLogger::Level level = 0; level <= 5; ++level) {
    KLogger::instance().println(level, "src/file.cpp", 12, "text");
  }
  KLogger::instance().println(127, "src/file.cpp", 12, "text");
  KLogger::instance().println(-1, "src/file.cpp", 12, "text");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "error: text\n"
            "warning: text\n"
            "notice: text\n"
            "info: text (src/file.cpp:12)\n"
            "debug: text (src/file.cpp:12)\n"
            "debug: text (src/file.cpp:12)\n"
            "debug: text (src/file.cpp:12)\n"
            "error: text\n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_F(StdOutSink, WritesATextWithPlaceholdersOrNulAsItIs) {
  const std::string text("{} %s\0end", 9);
  KLogger::instance().println(0, "file", 1, text);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "error: " + text + "\n");
  ::testing::internal::GetCapturedStdout();
}

TEST_F(Logger, AStreamThatCannotBeWrittenIsIgnored) {
  FILE* const full = std::fopen("/dev/full", "w");
  ASSERT_NE(full, nullptr);
  std::setvbuf(full, nullptr, _IONBF, 0);
  KLogger::instance().addSink(std::make_unique<KLogger::StdOutSink>(stdout, full, stdout), 1);
  record();
  klog(0, "lost there");
  EXPECT_EQ(lines_.size(), 1U);
  EXPECT_NE(std::ferror(full), 0);
  KLogger::destroyInstance();
  std::fclose(full);
}

}  // namespace
