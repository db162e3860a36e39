// SPDX-License-Identifier: MIT
#include "ctreport/ct_value_blocks.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "ctexport/ct_node_members.h"
#include "ctreport/ct_call_bytes.h"
#include "ctreport/ct_entry_blocks.h"

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
        calls_(source.trace),
        entries_([this](std::string packed, std::int64_t entries, EntryBlocks::Of what) {
          return take(std::move(packed), entries, what);
        }) {}

  ValueBlocks make() {
    constexpr std::size_t ahead = 8;
    for (std::size_t i = 0; i != nodes_.size(); ++i) {
      if (nodes_.size() - i > ahead) calls_.expect(nodes_[i + ahead]);
      entries_.begin_entry();
      put_entry(nodes_[i]);
      if (!entries_.end_entry()) return std::move(made_);
    }
    entries_.finish();
    return std::move(made_);
  }

 private:
  void put_entry(NodeId id) {
    if (const std::string_view call = calls_.of(id); !call.empty()) return entries_.put(call);
    const Node::Base node = source_.trace.node(id);
    JsonWriter json(entries_, JsonWriter::Form::compact);
    json.begin_object();
    members_.write_details(node, json);
    members_.write_values(node, json);
    json.end_object();
    entries_.put('\n');
  }

  // Where an ordinary block has no room, all that is cheaper is left out with it, so that what is
  // there can be told in a word.
  bool take(std::string packed, std::int64_t entries, EntryBlocks::Of what) {
    std::string name = "values-";
    name += std::to_string(made_.entries.size());
    const std::uint64_t size = Block::size_of(name, packed.size()) + size_in_list;
    if (size <= room_) {
      room_ -= size;
      made_.blocks.push_back({std::move(name), std::move(packed)});
      made_.entries.push_back(entries);
      taken_ += static_cast<std::size_t>(entries);
      return true;
    }
    const bool is_alone = what == EntryBlocks::Of::one_long_entry;
    leave_out(is_alone ? 1 : nodes_.size() - taken_);
    return is_alone;
  }

  void leave_out(std::size_t count) {
    made_.entries.push_back(-static_cast<std::int64_t>(count));
    made_.left_out += static_cast<std::int64_t>(count);
    for (; count != 0; --count) {
      const Measure& measure = source_.measures[nodes_[taken_++]];
      made_.longest_ns = std::max(made_.longest_ns, measure.total_ns);
    }
  }

  const Export::Source& source_;
  std::vector<NodeId> nodes_;
  std::uint64_t room_;
  CallBytes calls_;
  Export::NodeMembers members_{Export::Values::full};
  EntryBlocks entries_;
  ValueBlocks made_;
  std::size_t taken_ = 0;  // nodes that are in a block or left out
};

}  // namespace

ValueBlocks value_blocks(const Export::Source& source, const ValueOrder& order,
                         std::uint64_t room) {
  return Maker(source, order.sorted(source.trace, source.measures), room).make();
}

}  // namespace CT::Report
