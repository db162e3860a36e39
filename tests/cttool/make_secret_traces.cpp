// SPDX-License-Identifier: MIT
//
// make_secret_traces FOLDER FIRST COUNT   a trace a seed, N.ct, with secrets at every kind of
// place, and
//                                         N.txt, which lists them: "PLACE SECRET", the secret in
//                                         hex
// make_secret_traces --text FILE OUT      the trace of a text (tests/cli/README.md)
#include <cstdio>
#include <filesystem>
#include <string>

#include "process.h"
#include "secret_places.h"
#include "trace_text.h"

namespace {

std::string hex(const std::string& bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

void write_seed(const std::filesystem::path& folder, unsigned seed) {
  const CT::Test::SecretTrace made = CT::Test::make_secret_trace(seed);
  const std::string name = std::to_string(seed);
  CT::Test::write_file(folder / (name + ".ct"), made.bytes);
  std::string list;
  for (const auto& [place, secret] : made.secrets) list += place + " " + hex(secret) + "\n";
  CT::Test::write_file(folder / (name + ".txt"), list);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "%s FOLDER FIRST COUNT | --text FILE OUT\n", argv[0]);
    return 2;
  }
  if (std::string(argv[1]) == "--text") {
    const auto built = CT::Test::build_traces(CT::Test::read_file(argv[2]));
    CT::Test::write_file(argv[3], built[0].bytes);
    return 0;
  }
  std::filesystem::create_directories(argv[1]);
  const unsigned first = static_cast<unsigned>(std::stoul(argv[2]));
  const unsigned count = static_cast<unsigned>(std::stoul(argv[3]));
  for (unsigned seed = first; seed != first + count; ++seed) write_seed(argv[1], seed);
  return 0;
}
