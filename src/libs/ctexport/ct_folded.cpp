// SPDX-License-Identifier: MIT
//
// Folded stacks: the frames from the request inwards with semicolons between them, a blank, and the
// weight that was spent with exactly these frames open. A stack has one line, unless there are more
// than a table holds; readers add them up.
#include <string>
#include <unordered_map>
#include <vector>

#include "codetrace/render/ct_number.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_frame_names.h"
#include "ctexport/ct_one_line.h"
#include "ctexport/ct_span_walk.h"
#include "ctexport/ct_stack_table.h"

namespace CT::Export {

namespace {

// A line has all frames of its stack, so stacks without bounds would make an output that grows with
// the square of the trace. What lies deeper counts for the frame at this depth.
constexpr std::size_t deepest = 1000;

class FoldedStacks {
 public:
  FoldedStacks(const Source& source, Weight weight, Writer& out)
      : frames_(source.trace, Frames::OpenSpans::by_themselves),
        names_(frames_, put_one_frame),
        weight_(weight),
        out_(out) {}

  void begin(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
    ++depth_;
    if (depth_ > deepest) return;
    if (table_.is_full()) start_anew();
    open_.push_back(table_.push(top(), frame_of(id, measure)));
  }
  void end(NodeId /*id*/, const Measure& measure, const OwnFigures& figures) {
    table_.add(top(), weight_of(measure, figures));
    if (depth_-- <= deepest) open_.pop_back();
  }
  void point(NodeId /*id*/, const Measure& /*measure*/, std::uint32_t /*depth*/) {}

  void put_lines();
  // A trace without any weight has a line all the same: readers take no empty file.
  void put_anything() {
    if (has_lines_ || frames_.size() == 0) return;
    names_.put(0, out_);
    out_.put(" 0\n");
  }

 private:
  [[nodiscard]] StackTable::Stack top() const {
    return open_.empty() ? StackTable::bottom : open_.back();
  }
  [[nodiscard]] std::int64_t weight_of(const Measure& measure, const OwnFigures& figures) const {
    switch (weight_) {
      case Weight::own: return figures.own_ns;
      case Weight::memory: return figures.growth;
      case Weight::calls: return measure.function >= 0 ? 1 : 0;
    }
    return 0;
  }
  [[nodiscard]] std::int32_t frame_of(NodeId id, const Measure& measure);
  void start_anew();

  Frames frames_;
  FrameNames names_;
  std::vector<std::int32_t> namesakes_;  // of each frame: the first of its name
  std::unordered_map<std::string, std::int32_t> by_name_;
  Weight weight_;
  Writer& out_;
  StackTable table_;
  PlainArray<StackTable::Stack> open_;  // down to the deepest that has one of its own
  std::size_t depth_ = 0;
  bool has_lines_ = false;
  PlainArray<std::int32_t> path_;
};

// All that a line tells of a frame is the name, so functions of one name are one.
std::int32_t FoldedStacks::frame_of(NodeId id, const Measure& measure) {
  const std::int32_t frame = frames_.of(id, measure);
  const auto at = static_cast<std::size_t>(frame);
  if (at == namesakes_.size()) {
    std::int32_t first = frame;
    if (frames_.has_short_name(frames_[frame])) {
      MemoryWriter name;
      frames_.put_name(frames_[frame], name, put_one_frame);
      first = by_name_.try_emplace(std::string(name.view()), frame).first->second;
    }
    namesakes_.push_back(first);
  }
  return namesakes_[at];
}

void FoldedStacks::put_lines() {
  for (StackTable::Stack stack = 1; stack != table_.size() && out_.ok(); ++stack) {
    const std::int64_t weight = table_[stack].weight;
    if (weight == 0) continue;
    has_lines_ = true;
    path_.clear();
    for (StackTable::Stack at = stack; at != StackTable::bottom; at = table_[at].below) {
      path_.push_back(table_[at].frame);
    }
    for (std::size_t left = path_.size(); left != 0; --left) {
      if (left != path_.size()) out_.put(';');
      names_.put(path_[left - 1], out_);
    }
    out_.put(' ');
    put_signed(out_, weight);
    out_.put('\n');
  }
}

// What is open stays so.
void FoldedStacks::start_anew() {
  put_lines();
  path_.clear();
  for (const StackTable::Stack stack : open_) path_.push_back(table_[stack].frame);
  table_.clear();
  open_.clear();
  for (const std::int32_t frame : path_) open_.push_back(table_.push(top(), frame));
}

}  // namespace

void write_folded(const Source& source, const Options& options, Writer& out) {
  FoldedStacks stacks(source, options.weight, out);
  walk_spans(source, stacks);
  stacks.put_lines();
  stacks.put_anything();
}

}  // namespace CT::Export
