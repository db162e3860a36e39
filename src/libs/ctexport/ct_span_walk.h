// SPDX-License-Identifier: MIT
//
// The chosen nodes of a trace in the order of time: spans begin and end around what lies under
// them, points come in between. Everything balances, also where a trace does not: each span that
// began ends, the innermost first, and no time lies before the one that came before it, but for
// points without a time of their own.
#pragma once

#include <algorithm>
#include <cstdint>

#include "codetrace/bytes/ct_plain_array.h"
#include "ctexport/ct_export_source.h"
#include "ctmeasure/ct_elapsed.h"

namespace CT::Export {

// What a span comes to beside the chosen spans under it.
struct OwnFigures {
  std::int64_t own_ns = 0;      // never negative
  std::int64_t own_memory = 0;  // as far as the spans have a delta; it may be negative
  // Bytes by which memory grew: that where the span has a delta and it is positive, else 0.
  std::int64_t growth = 0;
};

// Calls sink.begin(id, measure, depth), sink.end(id, measure, figures) and sink.point(id, measure,
// depth), where the depth counts all nodes around it, chosen or not. Takes time linear in the
// nodes, and memory for the spans that are open at once.
template <class Sink>
class SpanWalk {
 public:
  // Borrows both.
  SpanWalk(const Source& source, Sink& sink) : source_(source), sink_(sink) {}

  void run() {
    const Trace& trace = source_.trace;
    for (NodeId id = 0; id != source_.measures.node_count(); ++id) {
      const NodeId parent = trace.parent(id);
      while (!open_.empty() && open_.back().id != parent) close();
      const Measure& measure = source_.measures[id];
      const bool is_chosen = source_.chosen.has(id);
      if (!measure.has(Measure::is_span)) {
        if (is_chosen) sink_.point(id, measure, depth());
        continue;
      }
      if (is_chosen) sink_.begin(id, measure, depth());
      open_.push_back({id, is_chosen, 0, 0});
    }
    while (!open_.empty()) close();
  }

 private:
  struct Open {
    NodeId id;
    bool is_chosen;
    std::int64_t children_ns;      // of the chosen spans next under it
    std::int64_t children_memory;  // their deltas
  };

  [[nodiscard]] std::uint32_t depth() const { return static_cast<std::uint32_t>(open_.size()); }

  void close() {
    const Open span = open_.back();
    open_.pop_back();
    std::int64_t total_ns = span.children_ns;
    std::int64_t delta = span.children_memory;
    if (span.is_chosen) {
      const Measure& measure = source_.measures[span.id];
      OwnFigures figures;
      figures.own_ns = measure.total_ns - span.children_ns;
      figures.own_memory = wrapped_difference(measure.memory_delta, span.children_memory);
      if (measure.has(Measure::has_delta)) {
        figures.growth = std::max<std::int64_t>(0, figures.own_memory);
      }
      sink_.end(span.id, measure, figures);
      total_ns = measure.total_ns;
      delta = measure.memory_delta;
    }
    if (open_.empty()) return;
    open_.back().children_ns += total_ns;
    open_.back().children_memory = wrapped_sum(open_.back().children_memory, delta);
  }

  const Source& source_;
  Sink& sink_;
  PlainArray<Open> open_;
};

template <class Sink>
void walk_spans(const Source& source, Sink& sink) {
  SpanWalk<Sink>(source, sink).run();
}

}  // namespace CT::Export
