// SPDX-License-Identifier: MIT
#include "ctreport/ct_value_blocks.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "ctexport/ct_node_members.h"
#include "ctreport/ct_line_blocks.h"

namespace CT::Report {

namespace {

// What the list of blocks says of one, at most.
constexpr std::uint64_t size_in_list = 16;

class Maker {
 public:
  Maker(const Export::Source& source, std::vector<NodeId> nodes, std::uint64_t room)
      : source_(source),
        nodes_(std::move(nodes)),
        room_(room),
        lines_([this](std::string packed, std::int64_t lines, LineBlocks::Of what) {
          return take(std::move(packed), lines, what);
        }) {}

  ValueBlocks make() {
    NodeReader reader(source_.trace.storage());
    Export::NodeMembers members(Export::Values::full);
    for (const NodeId id : nodes_) {
      const Node::Base& node = reader.read(id);
      lines_.begin_line();
      JsonWriter json(lines_, JsonWriter::Form::compact);
      json.begin_object();
      members.write_details(node, json);
      members.write_values(node, json);
      json.end_object();
      if (!lines_.end_line()) return std::move(made_);
    }
    lines_.finish();
    return std::move(made_);
  }

 private:
  // Where an ordinary block has no room, all that is cheaper is left out with it, so that what is
  // there can be told in a word.
  bool take(std::string packed, std::int64_t lines, LineBlocks::Of what) {
    std::string name = "values-";
    name += std::to_string(made_.lines.size());
    const std::uint64_t size = Block::size_of(name, packed.size()) + size_in_list;
    if (size <= room_) {
      room_ -= size;
      made_.blocks.push_back({std::move(name), std::move(packed)});
      made_.lines.push_back(lines);
      taken_ += static_cast<std::size_t>(lines);
      return true;
    }
    const bool is_alone = what == LineBlocks::Of::one_long_line;
    leave_out(is_alone ? 1 : nodes_.size() - taken_);
    return is_alone;
  }

  void leave_out(std::size_t count) {
    made_.lines.push_back(-static_cast<std::int64_t>(count));
    made_.left_out += static_cast<std::int64_t>(count);
    for (; count != 0; --count) {
      const Measure& measure = source_.measures[nodes_[taken_++]];
      made_.longest_ns = std::max(made_.longest_ns, measure.total_ns);
    }
  }

  const Export::Source& source_;
  std::vector<NodeId> nodes_;
  std::uint64_t room_;
  LineBlocks lines_;
  ValueBlocks made_;
  std::size_t taken_ = 0;  // nodes that are in a block or left out
};

}  // namespace

ValueBlocks value_blocks(const Export::Source& source, const ValueOrder& order,
                         std::uint64_t room) {
  return Maker(source, order.sorted(source.trace, source.measures), room).make();
}

}  // namespace CT::Report
