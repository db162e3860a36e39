// SPDX-License-Identifier: MIT
//
// Nodes come in the order in which they began, so the spans that are open around one are a stack. A
// node's time is cut to what its parent has left: from where the child before it ended to where the
// parent ends, which is known before, because a node is read with its end.
#include "ctmeasure/ct_measures.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "ctmeasure/ct_elapsed.h"
#include "ctmeasure/ct_last_under.h"

namespace CT {

namespace {

// Of the whole file, in its order; for a request that does not say itself when it began or ended.
struct Outermost {
  std::optional<KTime::Timestamp> first_time;
  std::optional<KTime::Timestamp> last_time;
  std::optional<std::uint64_t> last_memory;
};

Outermost outermost(const Trace& trace) {
  Outermost found;
  std::uint32_t first_at = Storage::no_end;
  std::uint32_t last_at = 0;
  std::uint32_t memory_at = 0;
  const auto look_at = [&](const Checkpoint::Base& record) {
    const std::uint32_t at = record.offset();
    if (record.has_timestamp() && at < first_at) {
      first_at = at;
      found.first_time = record.timestamp();
    }
    if (record.has_timestamp() && at >= last_at) {
      last_at = at;
      found.last_time = record.timestamp();
    }
    if (record.has_memory() && at >= memory_at) {
      memory_at = at;
      found.last_memory = record.memory();
    }
  };
  NodeReader reader(trace.storage());
  for (NodeId id = 0; id != trace.node_count(); ++id) {
    const Node::Base& node = reader.read(id);
    look_at(node.begin());
    if (node.end() != nullptr) look_at(*node.end());
  }
  return found;
}

class Measurer {
 public:
  // `own` may be null.
  Measurer(std::vector<Measure>& nodes, std::vector<OwnMeasure>* own, Measures::Counts& counts)
      : nodes_(nodes), own_(own), counts_(counts) {}

  void run(const Trace& trace) {
    nodes_.reserve(static_cast<std::size_t>(trace.node_count()));
    if (own_ != nullptr) own_->resize(static_cast<std::size_t>(trace.node_count()));
    NodeReader reader(trace.storage());
    for (NodeId id = 0; id != trace.node_count(); ++id) {
      const Node::Base& node = reader.read(id);
      if (id == 0) start(node, trace);
      add(node);
    }
    while (!open_.empty()) close();
  }

 private:
  // A span around the node that is looked at.
  struct Open {
    NodeId id;
    std::int64_t at;     // where its last child ended
    std::int64_t limit;  // where it ends itself, or at the latest
    std::optional<std::uint64_t> end_memory;
  };

  void start(const Node::Base& request, const Trace& trace) {
    const bool begins = request.begin().has_timestamp();
    const bool ends = request.end() != nullptr && request.end()->has_timestamp();
    const Outermost found = begins && ends ? Outermost() : outermost(trace);
    start_ = begins ? request.begin().timestamp() : found.first_time.value_or(KTime::Timestamp());
    outer_ = {Storage::no_node, 0, std::numeric_limits<std::int64_t>::max(), found.last_memory};
    if (found.last_time)
      outer_.limit = std::max<std::int64_t>(0, elapsed_ns(start_, *found.last_time));
  }

  void add(const Node::Base& node) {
    while (!open_.empty() && open_.back().id != node.parent_id()) close();
    nodes_.emplace_back();
    Measure& made = nodes_.back();
    if (const auto call = node.begin_as<Checkpoint::FunctionCall>(); call && call->function()) {
      made.function = call->function()->index();
    }
    begin(node, made);
    if (node.is_span()) {
      open(node, made);
    } else {
      around().at = std::max(around().at, made.start_ns);
      if (made.has(Measure::has_memory)) made.marks |= Measure::has_delta;
    }
  }

  [[nodiscard]] Open& around() { return open_.empty() ? outer_ : open_.back(); }

  void begin(const Node::Base& node, Measure& made) {
    const Checkpoint::Base& record = node.begin();
    if (record.has_memory()) {
      made.memory = record.memory();
      made.marks |= Measure::has_memory;
    }
    if (record.has_timestamp()) {
      made.start_ns = fit(elapsed_ns(start_, record.timestamp()), around().at, made);
      return;
    }
    made.marks |= Measure::untimed;
    ++counts_.untimed;
    const std::int64_t before = nodes_.size() > 1 ? nodes_[nodes_.size() - 2].start_ns : 0;
    made.start_ns = node.is_span() ? std::max(before, around().at) : before;
  }

  void open(const Node::Base& node, Measure& made) {
    made.marks |= Measure::is_span;
    Open span = {node.id(), made.start_ns, around().limit, around().end_memory};
    if (node.end() == nullptr) {
      made.marks |= Measure::open;
      ++counts_.open;
    } else {
      const Checkpoint::Base& end = *node.end();
      span.end_memory = end.has_memory() ? std::optional(end.memory()) : std::nullopt;
      if (end.has_timestamp()) {
        span.limit = fit(elapsed_ns(start_, end.timestamp()), made.start_ns, made);
      } else {
        made.marks |= Measure::end_untimed;
        if (!made.has(Measure::untimed)) ++counts_.untimed;
      }
    }
    open_.push_back(span);
  }

  // A time brought between `least` and where the span around ends.
  std::int64_t fit(std::int64_t time, std::int64_t least, Measure& made) {
    const std::int64_t fitting = std::clamp(time, least, std::max(least, around().limit));
    if (fitting != time && !made.has(Measure::moved)) {
      made.marks |= Measure::moved;
      ++counts_.moved;
    }
    return fitting;
  }

  void close() {
    const Open span = open_.back();
    open_.pop_back();
    Measure& made = nodes_[static_cast<std::size_t>(span.id)];
    const std::int64_t end = made.has(Measure::end_untimed) ? span.at : span.limit;
    made.total_ns = end - made.start_ns;
    if (made.has(Measure::has_memory) && span.end_memory) {
      made.marks |= Measure::has_delta;
      made.memory_delta = static_cast<std::int64_t>(*span.end_memory - made.memory);
    }
    around().at = std::max(around().at, end);
    if (own_ != nullptr) take_from_parent(span.id, made);
  }

  void take_from_parent(NodeId id, const Measure& made) {
    OwnMeasure& own = (*own_)[static_cast<std::size_t>(id)];
    own.ns += made.total_ns;
    own.memory = wrapped_sum(own.memory, made.memory_delta);
    if (open_.empty()) return;
    OwnMeasure& parent = (*own_)[static_cast<std::size_t>(open_.back().id)];
    parent.ns -= made.total_ns;
    parent.memory = wrapped_difference(parent.memory, made.memory_delta);
  }

  std::vector<Measure>& nodes_;
  std::vector<OwnMeasure>* own_;
  Measures::Counts& counts_;
  std::vector<Open> open_;
  Open outer_ = {};
  KTime::Timestamp start_;
};

}  // namespace

Measures::Measures(const Trace& trace, Own own) {
  Measurer(nodes_, own == Own::kept ? &own_ : nullptr, counts_).run(trace);
}

// A child without end goes on as long as what is around it, so it is the last one, wherever its end
// is looked for.
OwnMeasure own_of(const Trace& trace, const Measures& measures, NodeId id) {
  if (measures.keeps_own()) return measures.own(id);
  OwnMeasure own = {measures[id].total_ns, measures[id].memory_delta};
  const NodeId count = measures.node_count();
  NodeId child = id + 1;
  for (; child < count && trace.parent(child) == id;
       child = last_under(trace, child, count - 1) + 1) {
    own.ns -= measures[child].total_ns;
    own.memory = wrapped_difference(own.memory, measures[child].memory_delta);
  }
  return own;
}

}  // namespace CT
