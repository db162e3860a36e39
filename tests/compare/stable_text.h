// SPDX-License-Identifier: MIT
//
// StableText: makes what two runs of the tool write comparable. Addresses of DATA and of ADD DATA
// become distances from the first address of their section that was met, so that all but the place
// in memory is still compared; wild ones, too. The place of a log line loses its folders and its
// line number, which say nothing about what the tool does. All else stays as it is, byte for byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace CT::Test {

// For the outputs of one run, in the same order for each run.
class StableText {
 public:
  std::string normalise(std::string_view text);

 private:
  using Base = std::optional<std::uint64_t>;
  Base* base_of(std::string_view line);
  std::string line(std::string_view line);

  Base data_;
  Base add_data_;
};

}  // namespace CT::Test
