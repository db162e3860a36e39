// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_notable.h"

#include "codetrace/model/ct_view.h"

namespace CT::Tool {

namespace {

class Finder {
 public:
  Finder(const Trace& trace, const Scope& scope, std::size_t room)
      : trace_(trace), scope_(scope), room_(room), found_(trace.node_count(), false) {}

  // Behind all nodes under one comes the one itself, which then has its place already.
  template <class Is>
  void find(const Is& is) {
    for (std::size_t row = scope_.ranges().size(); row != 0; --row) {
      const Scope::Range& range = scope_.ranges()[row - 1];
      for (NodeId id = range.last; id >= range.first && room_ != 0; --id) {
        if (!found_.has(id) && is(id)) add(id, range.first);
      }
    }
  }
  [[nodiscard]] NodeSet found() && { return std::move(found_); }

 private:
  void add(NodeId id, NodeId first) {
    std::size_t count = 0;
    for (NodeId above = id; above >= first && !found_.has(above); above = trace_.parent(above)) {
      if (++count > room_) return;
    }
    room_ -= count;
    for (NodeId above = id; count != 0; --count, above = trace_.parent(above)) found_.add(above);
  }

  const Trace& trace_;
  const Scope& scope_;
  std::size_t room_;
  NodeSet found_;
};

}  // namespace

bool ended_with_exception(const Trace& trace, NodeId id) {
  const std::uint32_t end = trace.end_offset(id);
  if (end == Storage::no_end) return false;
  const unsigned char* word = trace.file().data().data() + end;
  const Checkpoint::Type type =
      Checkpoint::type_of_code(type_of_header(word, trace.file().big_endian()));
  return type == Checkpoint::Type::FUNCTION_EXCEPTION ||
         type == Checkpoint::Type::INCLUDE_EXCEPTION;
}

FoldOutcomes outcomes_of(const Trace& trace, const Measures& measures, const Folder& folder,
                         const Fold& fold) {
  FoldOutcomes outcomes;
  folder.for_each_member(fold, [&](NodeId id) {
    outcomes.threw += ended_with_exception(trace, id) ? 1 : 0;
    outcomes.open += measures[id].has(Measure::open) ? 1 : 0;
  });
  return outcomes;
}

NodeSet notable_nodes(const Trace& trace, const Measures& measures, const Scope& scope,
                      std::size_t room) {
  Finder finder(trace, scope, room);
  if (measures.counts().open != 0) {
    finder.find([&](NodeId id) { return measures[id].has(Measure::open); });
  }
  finder.find([&](NodeId id) { return ended_with_exception(trace, id); });
  finder.find([&](NodeId id) { return trace.type(id) == Node::Type::SCRIPT_ERROR; });
  return std::move(finder).found();
}

}  // namespace CT::Tool
