// SPDX-License-Identifier: MIT
//
// make_trace CALLS FILE   writes a trace as a PHP program with so many calls leaves it
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "php_like.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "%s CALLS FILE\n", argv[0]);
    return 2;
  }
  CT::Test::TraceBuilder trace;
  CT::Bench::add_php_like_request(std::strtoull(argv[1], nullptr, 10), trace);
  std::ofstream file(argv[2], std::ios::binary);
  file << trace.build();
  return file.flush() ? 0 : 1;
}
