// SPDX-License-Identifier: MIT
#include "ct_args.h"

#include <cstdio>
#include <cstring>

#include "kcommon/k_cmdline.h"
#include "kcommon/k_logger.h"

namespace CT {

namespace {

constexpr KCmdLine::Option options[] = {
    {'B', KCmdLine::Argument::none, "binary"},
    {'D', KCmdLine::Argument::none, "dump"},
    {'H', KCmdLine::Argument::none, "headers"},
    {'h', KCmdLine::Argument::none, "help"},
    {'J', KCmdLine::Argument::none, "json"},
    {'o', KCmdLine::Argument::required, "output"},
    {'S', KCmdLine::Argument::none, "sqlite"},
    {'T', KCmdLine::Argument::none, "text"},
    {'V', KCmdLine::Argument::none, "version"},
    {'v', KCmdLine::Argument::none, nullptr},
    {},
};

constexpr char usage[] = R"(USAGE: %s [args] <filename>

Processes the Code Trace file and outputs the content of it in the defined format.

Where [args] can be the following:
  -B, --binary             Outputs the Code Trace binary data as hex.
  -D, --dump               Dumps all the checkpoints in the Code Trace file.
  -H, --headers            Dumps all the Code Trace file headers.
  -h, --help               Print this help message and exit.
  -J, --json               Outputs the Code Trace as a JSON document.
  -o, --output <filename>  The output is stored to the file <filename>.
  -S, --sqlite             Outputs the Code Trace as a SQLITE database.
  -T, --text               Outputs the Code Trace using a human-readable text format.
  -V, --version            Prints version information and exits.
  -v                       Makes the Code Trace tool more verbose.
                           Can be used multiple times to make it even more verbose.

)";

}  // namespace

bool Args::init(int argc, char* const* argv) {
  const char* const program = argc > 0 ? argv[0] : nullptr;
  const KCmdLine line(options, argc, argv);
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
  switch (code) {
    case 'B': formats.insert(OutputFormat::BINARY); break;
    case 'D': formats.insert(OutputFormat::DUMP); break;
    case 'H': formats.insert(OutputFormat::HEADERS); break;
    case 'J': formats.insert(OutputFormat::JSON); break;
    case 'S': formats.insert(OutputFormat::SQLITE); break;
    case 'T': formats.insert(OutputFormat::TEXT); break;
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
  std::fprintf(error ? stderr : stdout, usage, program);
}

}  // namespace CT
