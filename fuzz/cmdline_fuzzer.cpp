// SPDX-License-Identifier: MIT
//
// A command line: the input's parts between NULs are its words, the program's name included.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "ct_args.h"
#include "kcommon/k_cmdline.h"
#include "support.h"

namespace {

using namespace CT;

// Messages of the sanitizers and of libFuzzer go to descriptor 2 all the same.
void mute_standard_streams() {
  static const bool once = [] {
    for (std::FILE** stream : {&stdout, &stderr}) *stream = std::fopen("/dev/null", "w");
    return true;
  }();
  static_cast<void>(once);
}

// Every item must name a word of the command line.
void walk(const std::vector<char*>& words) {
  static constexpr KCmdLine::Option options[] = {{'a', KCmdLine::Argument::none, "alpha"},
                                                 {'b', KCmdLine::Argument::required, "alphabet"},
                                                 {'o', KCmdLine::Argument::required, "output"},
                                                 {'v', KCmdLine::Argument::none, nullptr},
                                                 {}};
  std::vector<char*> argv = words;
  const KCmdLine line(options, static_cast<int>(argv.size()) - 1, argv.data());
  for (auto at = line.begin(); at != line.end(); at.next()) {
    Fuzz::expect(std::find(words.begin() + 1, words.end(), at.argument()) != words.end(),
                 "an argument that is one of the words");
    const bool needs_value =
        at.code() == 'b' || at.code() == 'o' || at.code() == KCmdLine::positional;
    Fuzz::expect(!needs_value || at.value() != nullptr, "a value where one is required");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  mute_standard_streams();
  std::string bytes(Fuzz::as_text(data, size));
  std::vector<char*> words;
  for (std::size_t at = 0; at < bytes.size();
       at = std::min(bytes.find('\0', at), bytes.size()) + 1) {
    words.push_back(bytes.data() + at);
  }
  words.push_back(nullptr);
  const int count = static_cast<int>(words.size()) - 1;
  if (count > 0) walk(words);

  Args args;
  const bool goes_on = args.init(count, words.data());
  if (goes_on) {
    Fuzz::expect(!args.filename.isEmpty() && !args.formats.isEmpty() && !args.error,
                 "a file name and a format");
  }
  KLogger::destroyInstance();
  return 0;
}
