// SPDX-License-Identifier: MIT
//
// What spans are called in formats that know functions and not calls: spans of one function, or of
// one included file, share a frame.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_text.h"
#include "codetrace/render/ct_writer.h"
#include "ctmeasure/ct_measures.h"

namespace CT::Export {

struct Frame {
  const Checkpoint::Function* function = nullptr;  // of calls
  NodeId first = Storage::no_node;                 // the first node of this frame
  Node::Type type = Node::Type::STARTUP;
  bool is_open = false;  // of spans that never ended
};

// How the text of a trace is written, such as put_json_text.
using PutStored = void (*)(Writer& out, std::string_view stored);

// Behind the name of a frame that is open.
inline constexpr std::string_view open_suffix = " (never ended)";

class Frames {
 public:
  enum class OpenSpans : bool { like_others, by_themselves };

  // Borrows: the trace. `open`: whether spans that never ended have frames of their own.
  Frames(const Trace& trace, OpenSpans open)
      : trace_(trace),
        splits_open_(open == OpenSpans::by_themselves),
        of_functions_(trace.functions().size(), -1) {}

  // The number of a span's frame; they are numbered from 0 in the order in which they are first
  // asked for.
  [[nodiscard]] std::int32_t of(NodeId id, const Measure& measure) {
    if (measure.function < 0 || (splits_open_ && measure.has(Measure::open))) {
      return of_other(id, measure);
    }
    std::int32_t& known = of_functions_[static_cast<std::size_t>(measure.function)];
    if (known < 0) known = add(id, measure, false);
    return known;
  }

  [[nodiscard]] std::int32_t size() const { return static_cast<std::int32_t>(frames_.size()); }
  [[nodiscard]] const Frame& operator[](std::int32_t number) const {
    return frames_[static_cast<std::size_t>(number)];
  }

  // "Class::method", "include FILE", "request", "write"; with the suffix for an open one.
  void put_name(const Frame& frame, Writer& out, PutStored put) const;
  // Whether that is short enough to be kept for all who show it.
  [[nodiscard]] bool has_short_name(const Frame& frame) const;
  // The script that a frame's code is in: of a function that a script defines, and of an include;
  // absent for others, and where the name is blank. And the line where it begins, 0 where there is
  // no file.
  [[nodiscard]] Checkpoint::String file(const Frame& frame) const;
  [[nodiscard]] static std::uint32_t line(const Frame& frame);

 private:
  std::int32_t of_other(NodeId id, const Measure& measure);
  std::int32_t of_include(NodeId id, const Measure& measure, bool is_open);
  std::int32_t add(NodeId id, const Measure& measure, bool is_open);

  const Trace& trace_;
  bool splits_open_;
  std::vector<std::int32_t> of_functions_;  // -1 for one without frame
  std::unordered_map<std::uint64_t, std::int32_t> others_;
  std::unordered_map<std::string, std::int32_t> includes_;  // by the file's name, if it is short
  std::vector<Frame> frames_;
};

// The name of a function as all verbs show it, "Class::method" or "function".
void put_function_name(const Checkpoint::Function& function, Writer& out, PutStored put);
// Whether it is short enough to be kept for all who show it.
bool has_short_name(const Checkpoint::Function& function, const Section& names);

}  // namespace CT::Export
