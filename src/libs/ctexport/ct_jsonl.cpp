// SPDX-License-Identifier: MIT
//
// One record of JSON a line: the first tells of the trace, each other one of a node, in the order
// in which they began.
#include "codetrace/render/ct_rendered.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_frames.h"
#include "ctexport/ct_node_members.h"
#include "ctexport/ct_request_title.h"
#include "ctexport/ct_span_walk.h"
#include "ctmeasure/ct_node_words.h"

namespace CT::Export {

namespace {

void put_number_or_null(bool is_there, std::int64_t value, JsonWriter& json) {
  is_there ? Checkpoint::write_exact(value, json) : json.null();
}

void put_memory(const Measure& measure, JsonWriter& json) {
  constexpr std::uint64_t exact = std::uint64_t{1} << 53;
  json.key("memory");
  if (!measure.has(Measure::has_memory)) return json.null();
  const bool is_exact = measure.memory <= exact;
  if (!is_exact) json.out().put('"');
  put_unsigned(json.out(), measure.memory);
  if (!is_exact) json.out().put('"');
}

class Records {
 public:
  Records(const Source& source, Values values, Writer& out)
      : trace_(source.trace), reader_(source.trace.storage()), members_(values), out_(out) {}

  void begin(NodeId id, const Measure& measure, std::uint32_t depth) { put(id, measure, depth); }
  void end(NodeId /*id*/, const Measure& /*measure*/, const OwnFigures& /*figures*/) {}
  void point(NodeId id, const Measure& measure, std::uint32_t depth) { put(id, measure, depth); }

 private:
  void put(NodeId id, const Measure& measure, std::uint32_t depth);
  void put_name(const Measure& measure, JsonWriter& json);
  void put_place(const Checkpoint::Base& record, JsonWriter& json);

  const Trace& trace_;
  NodeReader reader_;
  RenderedTexts texts_;
  NodeMembers members_;
  Writer& out_;
};

void put_marks(const Measure& measure, JsonWriter& json) {
  json.key("marks");
  json.begin_array();
  const auto put = [&](Measure::Mark mark, std::string_view word) {
    if (!measure.has(mark)) return;
    json.element();
    json.word(word);
  };
  put(Measure::untimed, "untimed");
  put(Measure::end_untimed, "end_untimed");
  put(Measure::moved, "moved");
  json.end_array();
}

void Records::put(NodeId id, const Measure& measure, std::uint32_t depth) {
  const Node::Base& node = reader_.read(id);
  JsonWriter json(out_, JsonWriter::Form::compact);
  json.begin_object();
  json.key("id");
  json.number(std::int64_t{id});
  json.key("parent");
  put_number_or_null(node.parent_id() >= 0, node.parent_id(), json);
  json.key("depth");
  json.number(std::int64_t{depth});
  json.key("kind");
  json.word(kind_of(node.type()));
  put_name(measure, json);
  json.key("start_ns");
  Checkpoint::write_exact(measure.start_ns, json);
  json.key("total_ns");
  Checkpoint::write_exact(measure.total_ns, json);
  json.key("own_ns");
  Checkpoint::write_exact(measure.own_ns, json);
  put_memory(measure, json);
  json.key("memory_delta");
  put_number_or_null(measure.has(Measure::has_delta), measure.memory_delta, json);
  json.key("own_memory");
  put_number_or_null(measure.has(Measure::has_delta), measure.own_memory, json);
  put_place(node.begin(), json);
  json.key("outcome");
  const std::string_view outcome = outcome_of(node);
  outcome.empty() ? json.null() : json.word(outcome);
  put_marks(measure, json);
  members_.write_details(node, json);
  members_.write_values(node, json);
  json.end_object();
  out_.put('\n');
}

void Records::put_name(const Measure& measure, JsonWriter& json) {
  json.key("name");
  if (measure.function < 0) return json.null();
  const auto& function = trace_.functions()[static_cast<std::size_t>(measure.function)];
  out_.put('"');
  texts_.put(
      &function, out_, [&] { return has_short_name(function, trace_.file().add_data()); },
      [&](Writer& out) { put_function_name(function, out, put_json_text); });
  out_.put('"');
}

void Records::put_place(const Checkpoint::Base& record, JsonWriter& json) {
  const unsigned char* const place = record.filename_place();
  json.key("file");
  if (place == nullptr || record.filename().is_empty()) {
    json.null();
  } else {
    out_.put('"');
    texts_.put(
        place, out_, [&] { return RenderedTexts::is_short(trace_.file().add_data(), place); },
        [&](Writer& out) { put_json_text(out, record.filename().view()); });
    out_.put('"');
  }
  json.key("line");
  put_number_or_null(record.has_location(), record.line_no(), json);
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
