// SPDX-License-Identifier: MIT
//
// make_case_traces FOLDER CASE...   writes the trace files that golden cases are run with
//
// A case without a trace is left out, and so is one with a text that older versions of the tool
// read differently on purpose, see short_inline_text.h.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "case_file.h"
#include "process.h"
#include "short_inline_text.h"
#include "text_scanner.h"
#include "trace_text.h"

namespace {

using CT::Test::BuiltTrace;
using CT::Test::ByteOrder;

std::vector<BuiltTrace> inputs(const CT::Test::CaseFile& golden) {
  if (golden.has("trace")) return CT::Test::build_traces(golden.content("trace"));
  if (!golden.has("file")) return {};
  const std::string hex = golden.content("file");
  CT::Test::TextScanner scanner(hex);
  std::string bytes;
  while (!scanner.at_end()) {
    const std::size_t before = bytes.size();
    bytes += scanner.hex_bytes();
    if (bytes.size() == before) scanner.fail("expected hex digits");
  }
  return {{ByteOrder::little, bytes}};
}

void write_inputs(const std::filesystem::path& path, const std::filesystem::path& folder) {
  const CT::Test::CaseFile golden(CT::Test::read_file(path));
  for (const BuiltTrace& input : inputs(golden)) {
    if (CT::Test::has_short_inline_text(input.bytes)) {
      std::fprintf(stderr, "%s is left out: versions differ on its inline text\n", path.c_str());
      continue;
    }
    const char* const suffix = input.order == ByteOrder::big ? ".big.ct" : ".ct";
    CT::Test::write_file(folder / (path.stem().string() + suffix), input.bytes);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "%s FOLDER CASE...\n", argv[0]);
    return 2;
  }
  std::filesystem::create_directories(argv[1]);
  int status = 0;
  for (int i = 2; i != argc; ++i) {
    try {
      write_inputs(argv[i], argv[1]);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "%s: %s\n", argv[i], error.what());
      status = 2;
    }
  }
  return status;
}
