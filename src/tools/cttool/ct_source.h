// SPDX-License-Identifier: MIT
//
// Lines of source files, if they are on this machine. A trace names any file at any line: only
// regular files are looked into, and no further than the first 16 MiB.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "codetrace/ct_trace.h"
#include "codetrace/model/ct_entity.h"
#include "codetrace/render/ct_json.h"

namespace CT::Tool {

struct SourceLine {
  std::string text = {};          // as it stands there, without the line's end; at most 4 KiB of it
  std::string_view problem = {};  // why there is no text; empty if there is
  bool is_newer = false;          // the file was changed after the request had begun

  // For people: the line, or why there is none.
  [[nodiscard]] std::string words() const;
};

// The line of this number, from 1, of a file with an absolute name. `seconds`: when the request
// began, since 1970.
SourceLine source_line(std::string_view file, std::uint32_t number, std::int64_t seconds);

// What the user gets of a node's source: nothing that was not asked for.
class NodeSource {
 public:
  NodeSource(const Trace& trace, bool is_asked_for);

  // The line from which a node was made, and the one where a function of a script begins.
  [[nodiscard]] std::optional<SourceLine> of_call(const Checkpoint::Base& begin) const;
  [[nodiscard]] std::optional<SourceLine> of_definition(const Checkpoint::Function& function) const;

  // Both as the member "source"; `function` may be null.
  void write(const Checkpoint::Base& begin, const Checkpoint::Function* function,
             JsonWriter& out) const;

 private:
  bool is_asked_for_;
  std::int64_t seconds_ = std::numeric_limits<std::int64_t>::max();
};

}  // namespace CT::Tool
