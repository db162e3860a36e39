// SPDX-License-Identifier: MIT
//
// What is wrong with a trace file, as data. The bytes may be anything: a file that CT::File refuses
// is looked at as far as its header can be believed. Nothing is printed here.
//
// The work is linear in the bytes. Beside them it takes 12 bytes for each call, include and write,
// a bit for each byte of DATA, three bits for each of ADD DATA, and the defects that are listed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "codetrace/tree/ct_diagnostics.h"
#include "ctcheck/ct_check_codes.h"

namespace CT::Check {

// Which part of the file an offset is in.
enum class Part : std::uint8_t { file, data, add_data };

// Where a defect is.
struct Spot {
  static constexpr std::uint64_t no_record = ~std::uint64_t{0};

  Part part = Part::file;
  std::uint64_t offset = 0;  // in that part
  // The checkpoint that it is in, where it is in one: its type, INVALID for a code without a name,
  // and the offset of its header word in DATA.
  Checkpoint::Type type = Checkpoint::Type::INVALID;
  std::uint64_t record = no_record;
};

struct Defect {
  Code code;
  Spot spot;
  std::uint64_t file_offset = 0;
  std::string what;  // in words of people, without a full stop; ASCII
  std::string cost;
};

struct Options {
  std::size_t limit = 20;  // defects of one code that are listed; 0 for all
  // What is wrong with the archive that the bytes came out of; empty if nothing is.
  std::string archive_damage;
};

struct Result {
  std::uint64_t bytes = 0;
  std::uint64_t checkpoints = 0;  // that lie whole in DATA, of any type
  // In the order of their places, up to the limit of each code.
  std::vector<Defect> defects;
  // How many there are of each code, listed or not.
  std::array<std::uint64_t, code_count> counts = {};
  // What the reader counts when it reads these bytes. Of a file that it refuses it is what it would
  // count of the checkpoints that are there, if nothing else were missing.
  Summary reader;

  [[nodiscard]] std::uint64_t count(Code code) const {
    return counts[static_cast<std::size_t>(code)];
  }
  [[nodiscard]] std::uint64_t count(Level level) const;
  // Whether nothing is wrong.
  [[nodiscard]] bool is_clean() const { return counts == decltype(counts){}; }
};

// Requires: File::padding readable bytes behind those of the span.
Result check(std::span<const unsigned char> bytes, const Options& options);

}  // namespace CT::Check
