// SPDX-License-Identifier: MIT
#include "ct_args.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kcommon/k_logger.h"

namespace {

using Formats = QSet<CT::OutputFormat>;
using CT::OutputFormat;

const char usage[] =
    "USAGE: tool [args] <filename>\n"
    "\n"
    "Processes the Code Trace file and outputs the content of it in the defined format.\n"
    "\n"
    "Where [args] can be the following:\n"
    "  -B, --binary             Outputs the Code Trace binary data as hex.\n"
    "  -D, --dump               Dumps all the checkpoints in the Code Trace file.\n"
    "  -H, --headers            Dumps all the Code Trace file headers.\n"
    "  -h, --help               Print this help message and exit.\n"
    "  -J, --json               Outputs the Code Trace as a JSON document.\n"
    "  -o, --output <filename>  The output is stored to the file <filename>.\n"
    "  -S, --sqlite             Outputs the Code Trace as a SQLITE database.\n"
    "  -T, --text               Outputs the Code Trace using a human-readable text format.\n"
    "  -V, --version            Prints version information and exits.\n"
    "  -v                       Makes the Code Trace tool more verbose.\n"
    "                           Can be used multiple times to make it even more verbose.\n"
    "\n";

class Args : public ::testing::Test {
 protected:
  Args() { KLogger::destroyInstance(); }
  ~Args() override { KLogger::destroyInstance(); }

  bool init(std::vector<std::string> words) {
    words.insert(words.begin(), "./tool");
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return init(static_cast<int>(words.size()), pointers.data());
  }

  bool init(int argc, char* const* argv) {
    args_ = {};
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const bool result = args_.init(argc, argv);
    out_ = ::testing::internal::GetCapturedStdout();
    err_ = ::testing::internal::GetCapturedStderr();
    return result;
  }

  void expect_success(const std::vector<std::string>& words) {
    EXPECT_TRUE(init(words));
    EXPECT_FALSE(args_.error);
    EXPECT_EQ(out_ + err_, "");
  }

  void expect_mistake(const std::vector<std::string>& words, const std::string& message) {
    EXPECT_FALSE(init(words));
    EXPECT_TRUE(args_.error);
    EXPECT_EQ(err_, message + usage);
    EXPECT_EQ(out_, "");
  }

  void expect_end(const std::vector<std::string>& words, const std::string& text) {
    EXPECT_FALSE(init(words));
    EXPECT_FALSE(args_.error);
    EXPECT_EQ(out_, text);
    EXPECT_EQ(err_, "");
  }

  std::string printed_name(const char* program) {
    ::testing::internal::CaptureStdout();
    CT::Args::print_usage(program, false);
    const std::string text = ::testing::internal::GetCapturedStdout();
    return text.substr(0, text.find(" [args]"));
  }

  CT::Args args_;
  std::string out_;
  std::string err_;
};

TEST_F(Args, FormatsHaveFixedValues) {
  EXPECT_EQ(static_cast<int>(OutputFormat::TEXT), 1);
  EXPECT_EQ(static_cast<int>(OutputFormat::SQLITE), 2);
  EXPECT_EQ(static_cast<int>(OutputFormat::HEADERS), 3);
  EXPECT_EQ(static_cast<int>(OutputFormat::BINARY), 4);
  EXPECT_EQ(static_cast<int>(OutputFormat::DUMP), 5);
  EXPECT_EQ(static_cast<int>(OutputFormat::JSON), 6);
}

TEST_F(Args, NoArgumentsMissTheFileName) {
  expect_mistake({}, "Missing Code Trace file name.\n\n");
}

TEST_F(Args, NotEvenAProgramNameMissesTheFileNameToo) {
  char* const none[] = {nullptr};
  EXPECT_FALSE(init(0, none));
  EXPECT_TRUE(args_.error);
  EXPECT_EQ(err_.rfind("Missing Code Trace file name.\n\nUSAGE: codetrace [args] <filename>\n", 0),
            0U);
}

TEST_F(Args, AnUnknownOptionBeforeHelpWins) {
  expect_mistake({"-x", "-h"}, "Unknown command line option -x.\n\n");
  expect_mistake({"-Hx", "file"}, "Unknown command line option -Hx.\n\n");
  expect_mistake({"--outptu=foo"}, "Unknown command line option --outptu=foo.\n\n");
}

TEST_F(Args, HelpBeforeAnUnknownOptionWins) { expect_end({"-h", "-x"}, usage); }

TEST_F(Args, HelpNeedsNoFileName) {
  expect_end({"-h"}, usage);
  expect_end({"--help"}, usage);
}

TEST_F(Args, VersionPrintsTheBannerAlone) {
  expect_end({"-V"}, "Tavrix Code Trace tool version 3.0.0\n");
  expect_end({"--version", "-x", "a", "b"}, "Tavrix Code Trace tool version 3.0.0\n");
}

TEST_F(Args, TheFirstOfHelpAndVersionWins) {
  expect_end({"-hV"}, usage);
  expect_end({"-Vh"}, "Tavrix Code Trace tool version 3.0.0\n");
}

TEST_F(Args, OutputWithoutANameIsAMistake) {
  expect_mistake({"file", "-o"}, "Command line option -o requires an argument.\n\n");
  expect_mistake({"--output"}, "Command line option --output requires an argument.\n\n");
}

TEST_F(Args, ASecondFileNameIsAMistake) {
  expect_mistake({"a", "b"}, "Multiple Code Trace files are not supported.\n\n");
  expect_end({"a", "-h", "b"}, usage);
}

TEST_F(Args, AMistakeEndsTheReading) {
  expect_mistake({"a", "b", "-J", "-o", "x"}, "Multiple Code Trace files are not supported.\n\n");
  EXPECT_TRUE(args_.formats.isEmpty());
  EXPECT_TRUE(args_.output.isEmpty());
}

TEST_F(Args, AnEmptyFileNameIsNone) {
  expect_mistake({""}, "Missing Code Trace file name.\n\n");
  expect_success({"", "file"});
  EXPECT_EQ(args_.filename, QStringLiteral("file"));
  expect_mistake({"file", ""}, "Multiple Code Trace files are not supported.\n\n");
}

TEST_F(Args, AnEmptyOutputNameMeansStandardOutput) {
  expect_success({"-o", "name", "-o", "", "file"});
  EXPECT_TRUE(args_.output.isEmpty());
  expect_success({"--output=", "file"});
  EXPECT_TRUE(args_.output.isEmpty());
}

TEST_F(Args, TheLastOutputNameCounts) {
  expect_success({"-o", "first", "--output=second", "file"});
  EXPECT_EQ(args_.output, QStringLiteral("second"));
}

TEST_F(Args, NamesAreReadAsUtf8) {
  expect_success({"-o", "\xC3\xA4", "\xE2\x82\xAC"});
  EXPECT_EQ(args_.output, QString(QChar(0xE4)));
  EXPECT_EQ(args_.filename, QString(QChar(0x20AC)));
}

TEST_F(Args, AFileNameAloneGivesText) {
  expect_success({"file"});
  EXPECT_EQ(args_.filename, QStringLiteral("file"));
  EXPECT_TRUE(args_.output.isEmpty());
  EXPECT_EQ(args_.formats, Formats{OutputFormat::TEXT});
}

TEST_F(Args, EachFormatHasAShortAndALongOption) {
  const struct {
    const char* letter;
    const char* name;
    OutputFormat format;
  } rows[] = {{"-B", "--binary", OutputFormat::BINARY},   {"-D", "--dump", OutputFormat::DUMP},
              {"-H", "--headers", OutputFormat::HEADERS}, {"-J", "--json", OutputFormat::JSON},
              {"-S", "--sqlite", OutputFormat::SQLITE},   {"-T", "--text", OutputFormat::TEXT}};
  for (const auto& row : rows) {
    expect_success({row.letter, "file"});
    EXPECT_EQ(args_.formats, Formats{row.format}) << row.letter;
    expect_success({"file", row.name});
    EXPECT_EQ(args_.formats, Formats{row.format}) << row.name;
  }
}

TEST_F(Args, AFormatChosenTwiceIsHeldOnce) {
  expect_success({"-D", "-D", "file"});
  EXPECT_EQ(args_.formats, Formats{OutputFormat::DUMP});
}

TEST_F(Args, FormatsCombine) {
  expect_success({"-J", "-T", "file"});
  EXPECT_EQ(args_.formats, (Formats{OutputFormat::JSON, OutputFormat::TEXT}));
  expect_success({"-HBD", "file"});
  EXPECT_EQ(args_.formats,
            (Formats{OutputFormat::HEADERS, OutputFormat::BINARY, OutputFormat::DUMP}));
}

TEST_F(Args, SqliteAloneAddsNoDefault) {
  expect_success({"-S", "file"});
  EXPECT_EQ(args_.formats, Formats{OutputFormat::SQLITE});
}

TEST_F(Args, EachVRaisesTheVerbosityByOne) {
  expect_success({"-v", "file", "-vv"});
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 4);
}

TEST_F(Args, AVBeforeAMistakeHasTakenEffect) {
  expect_mistake({"-v", "-x", "-v"}, "Unknown command line option -x.\n\n");
  EXPECT_EQ(KLogger::instance().maxVerbosity(), 2);
}

TEST_F(Args, UsageDropsLeadingDotsAndSlashesOfTheName) {
  EXPECT_EQ(printed_name("./tool"), "USAGE: tool");
  EXPECT_EQ(printed_name("../.././tool"), "USAGE: tool");
  EXPECT_EQ(printed_name("/usr/bin/tool"), "USAGE: usr/bin/tool");
  EXPECT_EQ(printed_name("tool.x/y"), "USAGE: tool.x/y");
  EXPECT_EQ(printed_name("100%s"), "USAGE: 100%s");
  EXPECT_EQ(printed_name("./"), "USAGE: ");
}

TEST_F(Args, UsageWithoutANameSaysCodetrace) {
  EXPECT_EQ(printed_name(nullptr), "USAGE: codetrace");
}

TEST_F(Args, UsageGoesToStandardErrorAfterAMistake) {
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  CT::Args::print_usage("tool", true);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), usage);
}

}  // namespace
