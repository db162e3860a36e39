// SPDX-License-Identifier: MIT
#include "ctreport/ct_columns.h"

#include <array>
#include <utility>

#include "ctexport/ct_export_origin.h"
#include "ctmeasure/ct_node_words.h"
#include "ctreport/ct_call_bytes.h"
#include "ctreport/ct_functions_json.h"

namespace CT::Report {

namespace {

std::uint8_t outcome_number(const Node::Base& node) {
  const std::string_view outcome = outcome_of(node);
  if (outcome.empty()) return 0;
  if (outcome == "ended") return ended;
  return outcome == "threw" ? threw : open;
}

// What a node has beside the columns. Of an include the path is its label; values it has if it
// threw, or where ends of others were taken for its own.
bool has_line(const Node::Base& node) {
  switch (node.type()) {
    case Node::Type::STARTUP:
    case Node::Type::SAPI_FLUSH:
    case Node::Type::SCRIPT_EXIT: return node.end_as<Checkpoint::EndWithValue>().has_value();
    case Node::Type::INCLUDE_CALL: {
      const auto include = node.begin_as<Checkpoint::IncludeCall>();
      const bool is_shown = include && include->include().length <= TextNumbers::longest;
      return !is_shown || node.end_as<Checkpoint::EndWithValue>().has_value();
    }
    default: return true;
  }
}

}  // namespace

std::uint8_t kind_number(Node::Type type) {
  constexpr std::array<std::uint8_t, 12> kinds = {0, 1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 9};
  static_assert(kinds.size() == Node::node_infos.size());
  return kinds[static_cast<std::size_t>(type)];
}

std::uint8_t flags_of(const Node::Base& node, const Measure& measure) {
  constexpr std::array<std::pair<Measure::Mark, Flag>, 5> marks = {
      {{Measure::has_memory, has_memory},
       {Measure::has_delta, has_delta},
       {Measure::untimed, untimed},
       {Measure::end_untimed, end_untimed},
       {Measure::moved, moved}}};
  unsigned flags = outcome_number(node);
  for (const auto& [mark, flag] : marks) flags |= measure.has(mark) ? unsigned{flag} : 0U;
  if (has_line(node)) flags |= has_values;
  return static_cast<std::uint8_t>(flags);
}

Columns::Columns(const Export::Source& source)
    : source_(source),
      reader_(source.trace.storage()),
      sums_(source.trace.functions().size()),
      values_(source.measures.node_count()),
      labels_(labels_text_.out()),
      files_(files_text_.out()) {}

void Columns::begin(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
  put(id, measure);
  sums_.begin(measure);
  ++spans_open_;
}

void Columns::end(NodeId /*id*/, const Measure& measure, const Export::OwnFigures& figures) {
  sums_.end(measure, figures);
  --spans_open_;
}

void Columns::point(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
  put(id, measure);
}

void Columns::put(NodeId id, const Measure& measure) {
  const Node::Base& node = reader_.read(id);
  const std::uint8_t flags = flags_of(node, measure);
  const auto number = static_cast<std::uint64_t>(id);
  id_.put_varint(number - id_before_);
  id_before_ = number;
  kind_.put_byte(kind_number(node.type()));
  flags_.put_byte(flags);
  depth_.put_difference(spans_open_, depth_before_);
  name_.put_varint(name_of(node, measure));
  start_.put_difference(static_cast<std::uint64_t>(measure.start_ns), start_before_);
  total_.put_varint(static_cast<std::uint64_t>(measure.total_ns));
  put_memory(measure);
  put_place(node.begin());
  if ((flags & has_values) != 0) values_.add(id, node.type(), measure);
  ++count_;
}

void Columns::put_memory(const Measure& measure) {
  if (measure.has(Measure::has_memory)) memory_.put_difference(measure.memory, memory_before_);
  if (measure.has(Measure::has_delta)) growth_.put_signed(measure.memory_delta);
}

void Columns::put_place(const Checkpoint::Base& record) {
  const Checkpoint::String file = record.filename();
  if (file.is_empty()) return file_.put_varint(0);
  file_.put_varint(std::uint64_t{files_.of({}, file)} + 1);
  line_.put_difference(record.line_no(), line_before_);
}

std::uint64_t Columns::name_of(const Node::Base& node, const Measure& measure) {
  const bool is_call = kind_number(node.type()) == kind_number(Node::Type::FUNCTION_CALL);
  if (is_call) return static_cast<std::uint64_t>(std::int64_t{measure.function} + 1);
  return label_of(node);
}

std::uint64_t Columns::label(std::string_view before, const Checkpoint::String& text) {
  if (before.empty() && text.is_empty()) return 0;
  return std::uint64_t{labels_.of(before, text)} + 1;
}

std::uint64_t Columns::label_of(const Node::Base& node) {
  if (const auto include = node.begin_as<Checkpoint::IncludeCall>()) {
    return label({}, include->include());
  }
  if (const auto header = node.begin_as<Checkpoint::SapiHeader>()) {
    return label({}, header->header());
  }
  if (const auto error = node.begin_as<Checkpoint::ScriptError>()) {
    const std::string_view level = error_level(error->error_num());
    return label(level.empty() ? "error" : level, error->error_message());
  }
  if (const auto event = node.begin_as<Checkpoint::UserEvent>()) {
    return label({}, event->event_name());
  }
  if (const auto sent = node.begin_as<Checkpoint::SapiSendHeaders>()) {
    const auto code = static_cast<std::int32_t>(sent->code());
    return std::uint64_t{labels_.of(std::to_string(code))} + 1;
  }
  if (node.type() != Node::Type::STARTUP) return 0;
  return std::uint64_t{labels_.of(Export::request_title(source_.trace))} + 1;
}

std::vector<Block> Columns::finish() {
  // The files of definitions come behind those of nodes.
  std::string functions =
      packed([&](Writer& out) { write_functions(source_.trace, sums_.rows(), files_, out); });
  labels_.finish();
  files_.finish();
  std::vector<Block> blocks;
  const auto add = [&](const char* name, std::string packed) {
    blocks.push_back({name, std::move(packed)});
  };
  add("functions", std::move(functions));
  add("labels", labels_text_.finish());
  add("files", files_text_.finish());
  add("classes", packed([&](Writer& out) { write_classes(source_.trace, out); }));
  add("nodes-id", id_.finish());
  add("nodes-kind", kind_.finish());
  add("nodes-flags", flags_.finish());
  add("nodes-depth", depth_.finish());
  add("nodes-name", name_.finish());
  add("nodes-start", start_.finish());
  add("nodes-total", total_.finish());
  add("nodes-memory", memory_.finish());
  add("nodes-growth", growth_.finish());
  add("nodes-file", file_.finish());
  add("nodes-line", line_.finish());
  return blocks;
}

}  // namespace CT::Report
