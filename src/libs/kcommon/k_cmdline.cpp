// SPDX-License-Identifier: MIT
#include "kcommon/k_cmdline.h"

#include <getopt.h>

namespace {

// The table in the two forms that getopt_long wants.
struct Table {
  // '-': positional arguments are reported in their place; ':': a missing argument is told apart.
  std::string letters = "-:";
  std::vector<option> names;
};

Table make_table(const KCmdLine::Option* row) {
  Table table;
  for (; row->letter != 0; ++row) {
    const bool required = row->argument == KCmdLine::Argument::required;
    table.letters += static_cast<char>(row->letter);
    if (required) table.letters += ':';
    if (row->name == nullptr) continue;
    const int kind = required ? required_argument : no_argument;
    table.names.push_back({row->name, kind, nullptr, row->letter});
  }
  table.names.push_back({});
  return table;
}

int code_of(int result) {
  if (result == '?') return KCmdLine::unknown;
  if (result == ':') return KCmdLine::missing_argument;
  return result;
}

}  // namespace

KCmdLine::KCmdLine(const Option* options, int argc, char* const* argv) {
  if (argc < 1) return;
  const Table table = make_table(options);
  opterr = 0;
  optind = 0;  // makes getopt_long start anew; it then begins at 1
  int at = 1;
  while (true) {
    const int result = getopt_long(argc, argv, table.letters.c_str(), table.names.data(), nullptr);
    if (result == -1) break;
    // getopt_long moves on only once it has read all of an argument, its last letter included.
    items_.push_back({code_of(result), argv[at], optarg});
    at = optind;
  }
  for (at = optind; at < argc; ++at) items_.push_back({positional, argv[at], argv[at]});
}
