// SPDX-License-Identifier: MIT
//
// One record of JSON a line: the first tells of the trace, each other one of a node, in the order
// in which they began.
#include <array>
#include <utility>

#include "codetrace/render/ct_rendered.h"
#include "ctexport/ct_export_origin.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_frames.h"
#include "ctexport/ct_node_members.h"
#include "ctexport/ct_span_walk.h"
#include "ctmeasure/ct_node_words.h"

namespace CT::Export {

namespace {

// A member of an object, which is not its first: with the comma and the name.
template <std::size_t Size>
void put_member(const char (&start)[Size], bool is_there, std::int64_t value, JsonWriter& json) {
  json.out().put(start);
  is_there ? Checkpoint::write_exact(value, json) : json.null();
}

void put_memory(const Measure& measure, JsonWriter& json) {
  constexpr std::uint64_t exact = std::uint64_t{1} << 53;
  if (measure.memory <= exact) {
    const auto memory = static_cast<std::int64_t>(measure.memory);
    return put_member(R"(,"memory":)", measure.has(Measure::has_memory), memory, json);
  }
  json.out().put(R"(,"memory":")");
  put_unsigned(json.out(), measure.memory);
  json.out().put('"');
}

class Records {
 public:
  Records(const Source& source, Values values, Writer& out)
      : trace_(source.trace),
        measures_(source.measures),
        reader_(source.trace.storage()),
        members_(values),
        out_(out) {}

  void begin(NodeId id, const Measure& measure, std::uint32_t depth) { put(id, measure, depth); }
  void end(NodeId /*id*/, const Measure& /*measure*/, const OwnFigures& /*figures*/) {}
  void point(NodeId id, const Measure& measure, std::uint32_t depth) { put(id, measure, depth); }

 private:
  void put(NodeId id, const Measure& measure, std::uint32_t depth);
  void put_name(const Measure& measure);
  void put_file(const Checkpoint::Base& record);

  const Trace& trace_;
  const Measures& measures_;
  NodeReader reader_;
  RenderedTexts texts_;
  NodeMembers members_;
  Writer& out_;
};

void put_marks(const Measure& measure, Writer& out) {
  static constexpr std::array<std::pair<Measure::Mark, std::string_view>, 3> words = {
      {{Measure::untimed, R"("untimed")"},
       {Measure::end_untimed, R"("end_untimed")"},
       {Measure::moved, R"("moved")"}}};
  out.put(R"(,"marks":[)");
  bool is_first = true;
  for (const auto& [mark, word] : words) {
    if (!measure.has(mark)) continue;
    if (!is_first) out.put(',');
    is_first = false;
    out.put(word);
  }
  out.put(']');
}

// What every record has is put in blocks.
void Records::put(NodeId id, const Measure& measure, std::uint32_t depth) {
  const Node::Base& node = reader_.read(id);
  const bool has_delta = measure.has(Measure::has_delta);
  const OwnMeasure own = own_of(trace_, measures_, id);
  JsonWriter json(out_, JsonWriter::Form::compact);
  json.begin_object();
  json.key("id");
  json.number(std::int64_t{id});
  put_member(R"(,"parent":)", node.parent_id() >= 0, node.parent_id(), json);
  put_member(R"(,"depth":)", true, depth, json);
  out_.put(R"(,"kind":")");
  out_.put(kind_of(node.type()));
  put_name(measure);
  put_member(R"(,"start_ns":)", true, measure.start_ns, json);
  put_member(R"(,"total_ns":)", true, measure.total_ns, json);
  put_member(R"(,"own_ns":)", true, own.ns, json);
  put_memory(measure, json);
  put_member(R"(,"memory_delta":)", has_delta, measure.memory_delta, json);
  put_member(R"(,"own_memory":)", has_delta, own.memory, json);
  put_file(node.begin());
  put_member(R"(,"line":)", node.begin().has_location(), node.begin().line_no(), json);
  out_.put(R"(,"outcome":)");
  const std::string_view outcome = outcome_of(node);
  outcome.empty() ? json.null() : json.word(outcome);
  put_marks(measure, out_);
  members_.write_details(node, json);
  members_.write_values(node, json);
  json.end_object();
  out_.put('\n');
}

void Records::put_name(const Measure& measure) {
  if (measure.function < 0) return out_.put(R"(","name":null)");
  const auto& function = trace_.functions()[static_cast<std::size_t>(measure.function)];
  out_.put(R"(","name":")");
  texts_.put(
      &function, out_, [&] { return has_short_name(function, trace_.file().add_data()); },
      [&](Writer& out) { put_function_name(function, out, put_json_text); });
  out_.put('"');
}

void Records::put_file(const Checkpoint::Base& record) {
  const unsigned char* const place = record.filename_place();
  if (place == nullptr || record.filename().is_empty()) return out_.put(R"(,"file":null)");
  out_.put(R"(,"file":")");
  texts_.put(
      place, out_, [&] { return RenderedTexts::is_short(trace_.file().add_data(), place); },
      [&](Writer& out) { put_json_text(out, record.filename().view()); });
  out_.put('"');
}

}  // namespace

void write_jsonl(const Source& source, const Options& options, Writer& out) {
  JsonWriter json(out, JsonWriter::Form::compact);
  json.begin_object();
  json.key("schema");
  json.word("cttool.export/1");
  write_origin(source, json);
  json.key("title");
  json.text(request_title(source.trace));
  json.key("nodes");
  json.number(std::int64_t{source.measures.node_count()});
  json.end_object();
  out.put('\n');
  Records records(source, options.values, out);
  walk_spans(source, records);
}

}  // namespace CT::Export
