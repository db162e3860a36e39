// SPDX-License-Identifier: MIT
//
// make_random_traces FOLDER COUNT SEED [--short-inline-texts]   writes so many random trace files
//
// With the option, some have texts that older versions of the tool read differently on purpose, see
// short_inline_text.h.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

#include "process.h"
#include "random_trace.h"

namespace {

// Padded, so that the names sort like the numbers.
std::string file_name(std::uint64_t number) {
  const std::string digits = std::to_string(number);
  constexpr std::size_t width = 6;
  return std::string(width - std::min(width, digits.size()), '0') + digits + ".ct";
}

}  // namespace

int main(int argc, char** argv) try {
  constexpr std::string_view option = "--short-inline-texts";
  const bool short_inline_texts = argc == 5 && argv[4] == option;
  if (argc != 4 && !short_inline_texts) {
    std::fprintf(stderr, "%s FOLDER COUNT SEED [--short-inline-texts]\n", argv[0]);
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  const std::uint64_t count = std::strtoull(argv[2], nullptr, 10);
  const std::uint64_t seed = std::strtoull(argv[3], nullptr, 10);
  std::filesystem::create_directories(folder);
  for (std::uint64_t number = 0; number != count; ++number) {
    CT::Test::write_file(folder / file_name(number),
                         CT::Test::random_trace(seed, number, short_inline_texts));
  }
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
  return 2;
}
