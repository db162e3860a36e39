// SPDX-License-Identifier: MIT
//
// The table of what can be wrong with a trace file: of each kind its code, how grave it is, what it
// means and what it costs. Codes and levels are promises to users; docs/damaged-files.md lists
// them, and a test holds it to this table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace CT::Check {

enum class Level : std::uint8_t {
  fatal,  // the reader refuses the file
  lost,   // the reader leaves out something, or shows less of it than was recorded
  odd,    // nothing is left out, but no writer that is whole does this
};
inline constexpr std::size_t level_count = 3;

// In the order of the table.
enum class Code : std::uint8_t {
  // The file as a whole.
  header,
  magic,
  version,
  size,
  archive,
  flags,
  origin,
  // Checkpoints in DATA.
  word_end,
  payload_end,
  type,
  crash,
  no_payload,
  zeros,
  // Fields of a checkpoint.
  field_end,
  text_length,
  value_end,
  count,
  text_nul,
  text_short,
  count_below,
  value_type,
  cut_size,
  bytes_left,
  header_operation,
  // What stands in ADD DATA, and references to it.
  ref_range,
  ref_none,
  ref_middle,
  descriptor_end,
  descriptor_type,
  overlap,
  utf8,
  unused,
  // Begins and ends.
  no_startup,
  before_startup,
  startup_twice,
  after_shutdown,
  no_shutdown,
  no_end,
  no_begin,
  end_kind,
  end_twice,
  end_late,
  // Clock and memory.
  time_back,
  time_range,
  memory,
};
inline constexpr std::size_t code_count = static_cast<std::size_t>(Code::memory) + 1;

struct CodeInfo {
  Code code;
  std::string_view name;
  Level level;
  std::string_view meaning;
  std::string_view cost;  // where a defect says none of its own
};

extern const std::array<CodeInfo, code_count> codes;

const CodeInfo& code_info(Code code);
std::string_view level_name(Level level);

}  // namespace CT::Check
