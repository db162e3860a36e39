// SPDX-License-Identifier: MIT
//
// Traces with secrets at every kind of place where a trace can have one. It knows nothing of what
// finds them.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace CT::Test {

struct SecretTrace {
  std::string bytes;
  // What is to be found nowhere in a copy: the kind of place, and the secret.
  std::vector<std::pair<std::string, std::string>> secrets;
};

// The same for the same seed; little- and big-endian by turns.
SecretTrace make_secret_trace(unsigned seed);

}  // namespace CT::Test
