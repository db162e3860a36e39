// SPDX-License-Identifier: MIT
#include "ct_args.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <utility>

#include "kcommon/k_cmdline.h"
#include "kcommon/k_logger.h"

namespace CT {

namespace {

// An option that is none of an output.
struct OtherOption {
  KCmdLine::Option option;
  const char* shown;
  const char* help;
};

constexpr std::array other_options = {
    OtherOption{
        {'h', KCmdLine::Argument::none, "help"}, "-h, --help", "Print this help message and exit."},
    OtherOption{{'o', KCmdLine::Argument::required, "output"},
                "-o, --output <filename>",
                "The output is stored to the file <filename>."},
    OtherOption{{'V', KCmdLine::Argument::none, "version"},
                "-V, --version",
                "Prints version information and exits."},
    OtherOption{
        {'v', KCmdLine::Argument::none, nullptr},
        "-v",
        "Makes the Code Trace tool more verbose.\n"
        "                           Can be used multiple times to make it even more verbose."},
};

// All options and an empty row, which ends them.
constexpr auto options = [] {
  std::array<KCmdLine::Option, formats.size() + other_options.size() + 1> all{};
  std::size_t count = 0;
  for (const FormatRow& row : formats) {
    all[count++] = {row.letter, KCmdLine::Argument::none, row.name};
  }
  for (const OtherOption& row : other_options) all[count++] = row.option;
  return all;
}();

static_assert(
    [] {
      for (std::size_t at = 0; at != options.size(); ++at) {
        for (std::size_t other = 0; other != at; ++other) {
          if (options[at].letter == options[other].letter) return false;
        }
      }
      return true;
    }(),
    "a letter for each option");

// The options as the usage lists them: by letter, small ones behind capitals.
std::string usage_of_options() {
  std::map<std::pair<int, int>, std::string> lines;
  const auto add = [&](int letter, std::string shown, const char* help) {
    constexpr std::size_t width = 25;
    shown.resize(width, ' ');
    lines[{std::tolower(letter), letter}] = "  " + shown + help + "\n";
  };
  for (const FormatRow& row : formats) {
    add(row.letter, std::string("-") + row.letter + ", --" + row.name, row.help);
  }
  for (const OtherOption& row : other_options) add(row.option.letter, row.shown, row.help);
  std::string text;
  for (const auto& line : lines) text += line.second;
  return text;
}

constexpr char usage[] = R"(USAGE: %s [args] <filename>

Processes the Code Trace file and outputs the content of it in the defined format.

Where [args] can be the following:
%s
)";

}  // namespace

bool Args::init(int argc, char* const* argv) {
  const char* const program = argc > 0 ? argv[0] : nullptr;
  const KCmdLine line(options.data(), argc, argv);
  Step step = Step::go_on;
  for (auto at = line.begin(); step == Step::go_on && at != line.end(); at.next()) {
    step = take(at.code(), at.argument(), at.value(), program);
  }
  if (step == Step::go_on && filename.isEmpty()) {
    std::fputs("Missing Code Trace file name.\n\n", stderr);
    step = Step::usage_error;
  }
  if (step == Step::usage_error) {
    error = true;
    print_usage(program, true);
  }
  if (step != Step::go_on) return false;
  if (formats.isEmpty()) formats.insert(OutputFormat::TEXT);
  return true;
}

Args::Step Args::take(int code, const char* argument, const char* value, const char* program) {
  for (const FormatRow& row : CT::formats) {
    if (row.letter != code) continue;
    formats.insert(row.format);
    return Step::go_on;
  }
  switch (code) {
    case 'o': output = QString::fromUtf8(value); break;
    case 'v': KLogger::instance().increaseMaxVerbosity({}); break;
    case 'h': print_usage(program, false); return Step::stop;
    case 'V': std::printf("%s Code Trace tool version %s\n", product, version); return Step::stop;
    case KCmdLine::positional:
      if (!filename.isEmpty()) {
        std::fputs("Multiple Code Trace files are not supported.\n\n", stderr);
        return Step::usage_error;
      }
      filename = QString::fromUtf8(value);
      break;
    case KCmdLine::unknown:
      std::fprintf(stderr, "Unknown command line option %s.\n\n", argument);
      return Step::usage_error;
    case KCmdLine::missing_argument:
      std::fprintf(stderr, "Command line option %s requires an argument.\n\n", argument);
      return Step::usage_error;
  }
  return Step::go_on;
}

void Args::print_usage(const char* program, bool error) {
  if (program == nullptr) program = "codetrace";
  // Kept: only leading dots and slashes go, so /usr/bin/tool is called usr/bin/tool.
  program += std::strspn(program, "./");
  std::fprintf(error ? stderr : stdout, usage, program, usage_of_options().c_str());
}

}  // namespace CT
