// SPDX-License-Identifier: MIT
//
// Callgrind's format: a call graph with costs. A function's own costs stand on the line where it is
// defined, those of its calls on the line of the call.
#include "codetrace/ct_version.h"
#include "codetrace/render/ct_number.h"
#include "ctexport/ct_call_cycles.h"
#include "ctexport/ct_call_graph.h"
#include "ctexport/ct_callgrind_names.h"
#include "ctexport/ct_export_origin.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_one_line.h"
#include "ctexport/ct_open_functions.h"
#include "ctexport/ct_span_walk.h"
#include "ctmeasure/ct_request_facts.h"

namespace CT::Export {

namespace {

Costs costs_of(const Measure& measure, const OwnFigures& figures) {
  return {figures.own_ns, figures.growth, measure.function >= 0 ? 1 : 0};
}

// What all of it costs.
struct Totals {
  Costs sum;

  void begin(NodeId /*id*/, const Measure& /*measure*/, std::uint32_t /*depth*/) {}
  void end(NodeId /*id*/, const Measure& measure, const OwnFigures& figures) {
    sum.add(costs_of(measure, figures));
  }
  void point(NodeId /*id*/, const Measure& /*measure*/, std::uint32_t /*depth*/) {}
};

void put_costs(std::uint32_t line, const Costs& costs, Writer& out) {
  put_unsigned(out, line);
  for (const std::int64_t cost : {costs.time_ns, costs.growth, costs.calls}) {
    out.put(' ');
    put_signed(out, cost);
  }
  out.put('\n');
}

// Who calls whom.
class Callers {
 public:
  Callers(Frames& frames, CallgrindNames& names, CallCycles& cycles)
      : frames_(frames), functions_(names), cycles_(cycles) {}

  void begin(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
    const OpenFunctions::Id function = functions_.begin(frames_.of(id, measure));
    if (function == OpenFunctions::none) return;
    if (!open_.empty()) cycles_.add(open_.back(), function);
    open_.push_back(function);
  }
  void end(NodeId /*id*/, const Measure& /*measure*/, const OwnFigures& /*figures*/) {
    if (!functions_.end()) open_.pop_back();
  }
  void point(NodeId /*id*/, const Measure& /*measure*/, std::uint32_t /*depth*/) {}

 private:
  Frames& frames_;
  OpenFunctions functions_;
  CallCycles& cycles_;
  PlainArray<OpenFunctions::Id> open_;
};

class Callgrind {
 public:
  Callgrind(const Source& source, Frames& frames, CallgrindNames& names, const CallCycles& cycles,
            Writer& out)
      : frames_(frames),
        names_(names),
        cycles_(cycles),
        functions_(names),
        reader_(source.trace.storage()),
        out_(out) {}

  void begin(NodeId id, const Measure& measure, std::uint32_t /*depth*/);
  void end(NodeId id, const Measure& measure, const OwnFigures& figures);
  void point(NodeId /*id*/, const Measure& /*measure*/, std::uint32_t /*depth*/) {}

  // Writes down what is known and forgets it.
  void put_all();

 private:
  struct Open {
    CallGraph::Place function;
    OpenFunctions::Id entry;
    std::int32_t turn;  // of the cycle that it is in
    std::int32_t frame;
    std::uint32_t line;  // of the call
    Costs inclusive;
  };

  [[nodiscard]] std::uint32_t line_of_call(NodeId id, std::int32_t caller);
  [[nodiscard]] std::int32_t turn_of(OpenFunctions::Id entry) const;
  void put_calls(const CallGraph::Node& node);

  Frames& frames_;
  CallgrindNames& names_;
  const CallCycles& cycles_;
  OpenFunctions functions_;
  NodeReader reader_;
  Writer& out_;
  CallGraph graph_;
  PlainArray<Open> open_;
};

// A call of a script's function stands in that one's file. Of others nobody knows the line, but of
// an include, which has no more than one file.
std::uint32_t Callgrind::line_of_call(NodeId id, std::int32_t caller) {
  const Checkpoint::Base& call = reader_.read(id).begin();
  const Frame& frame = frames_[caller];
  if (frame.type == Node::Type::INCLUDE_CALL) return call.line_no();
  if (frame.function == nullptr || !frame.function->is_user()) return 0;
  const bool is_there = call.filename_place() == frame.function->filename_place() ||
                        call.filename().view() == frame.function->filename().view();
  return is_there ? call.line_no() : 0;
}

// A call that leads back begins a new turn of the cycle, so that from turn to turn, and within one,
// calls only lead on.
std::int32_t Callgrind::turn_of(OpenFunctions::Id entry) const {
  if (open_.empty() || !cycles_.are_together(open_.back().entry, entry)) return 1;
  return open_.back().turn + (cycles_.leads_back(open_.back().entry, entry) ? 1 : 0);
}

void Callgrind::begin(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
  const std::int32_t frame = frames_.of(id, measure);
  const OpenFunctions::Id entry = functions_.begin(frame);
  if (entry == OpenFunctions::none) return;
  const std::int32_t turn = turn_of(entry);
  if (turn > CallgrindNames::deepest) {
    functions_.leave();
    functions_.begin_too_deep();
    return;
  }
  const std::uint32_t line = open_.empty() ? 0 : line_of_call(id, open_.back().frame);
  open_.push_back({names_.function(entry, turn), entry, turn, frame, line, {}});
}

// What is too deep is part of the call that is not.
void Callgrind::end(NodeId /*id*/, const Measure& measure, const OwnFigures& figures) {
  const Costs own = costs_of(measure, figures);
  graph_.add_self(open_.back().function, own);
  open_.back().inclusive.add(own);
  if (functions_.end()) return;
  const Open span = open_.back();
  open_.pop_back();
  if (open_.empty()) return;
  open_.back().inclusive.add(span.inclusive);
  if (graph_.is_full()) put_all();
  graph_.add_call(open_.back().function, span.function, span.line, span.inclusive);
}

void Callgrind::put_all() {
  for (CallGraph::Place function = 0; function != graph_.size() && out_.ok(); ++function) {
    const CallGraph::Node& node = graph_.node(function);
    if (!node.is_there) continue;
    out_.put("\nfl=");
    names_.put_file(function, out_);
    out_.put("\nfn=");
    names_.put_function(function, out_);
    out_.put('\n');
    put_costs(names_.line(function), node.self, out_);
    put_calls(node);
  }
  graph_.clear();
}

void Callgrind::put_calls(const CallGraph::Node& node) {
  for (CallGraph::Place at = node.first_arc; at != CallGraph::none; at = graph_.arc(at).next) {
    const CallGraph::Arc& arc = graph_.arc(at);
    out_.put("cfi=");
    names_.put_file(arc.callee, out_);
    out_.put("\ncfn=");
    names_.put_function(arc.callee, out_);
    out_.put("\ncalls=");
    put_signed(out_, arc.count);
    out_.put(' ');
    put_unsigned(out_, names_.line(arc.callee));
    out_.put('\n');
    put_costs(arc.line, arc.inclusive, out_);
  }
}

// Readers look for the events within the first two kilobytes.
void put_head(const Source& source, const Costs& totals, Writer& out) {
  constexpr std::size_t longest_command = 200;
  const std::string title = request_title(source.trace);
  const Measures::Counts& counts = source.measures.counts();
  out.put("# callgrind format\nversion: 1\ncreator: cttool " CODETRACE_VERSION_STRING "\npid: ");
  put_unsigned(out, source.trace.file().header().request_id);
  out.put("\ncmd: ");
  out.put(std::string_view(title).substr(0, whole_characters(title, longest_command)));
  out.put("\npart: 1\n");
  if (const std::string started = started_ns(source.trace); !started.empty()) {
    out.put("desc: Started: ");
    out.put(started);
    out.put(" ns since 1970\n");
  }
  out.put("desc: Never ended: ");
  put_signed(out, counts.open);
  out.put("\ndesc: Without time: ");
  put_signed(out, counts.untimed);
  out.put("\ndesc: With a time that was moved: ");
  put_signed(out, counts.moved);
  out.put("\ndesc: Damaged places: ");
  put_signed(out, damaged_places(source.trace.summary()));
  out.put(
      "\npositions: line\n"
      "event: Time_ns : Time in nanoseconds\n"
      "event: Memory_growth : Growth of memory in bytes\n"
      "event: Calls : Calls of functions\n"
      "events: Time_ns Memory_growth Calls\n"
      "summary:");
  for (const std::int64_t cost : {totals.time_ns, totals.growth, totals.calls}) {
    out.put(' ');
    put_signed(out, cost);
  }
  out.put('\n');
}

}  // namespace

void write_callgrind(const Source& source, const Options& /*options*/, Writer& out) {
  Totals totals;
  walk_spans(source, totals);
  put_head(source, totals.sum, out);
  Frames frames(source.trace, Frames::OpenSpans::like_others);
  CallgrindNames names(source.trace, frames);
  CallCycles cycles;
  Callers callers(frames, names, cycles);
  walk_spans(source, callers);
  cycles.find();
  Callgrind callgrind(source, frames, names, cycles, out);
  walk_spans(source, callgrind);
  callgrind.put_all();
}

}  // namespace CT::Export
