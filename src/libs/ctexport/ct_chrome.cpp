// SPDX-License-Identifier: MIT
//
// Trace events, as Chrome's tracing writes them: spans as begin and end, whose times are exact, so
// that equal times read equal in every reader (durations do not add up in floating point). A span
// that took no nanosecond is an instant: readers that sort begins and ends apart could not nest it.
#include <cstring>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_digits.h"
#include "codetrace/render/ct_rendered.h"
#include "ctexport/ct_export_origin.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_frame_names.h"
#include "ctexport/ct_node_members.h"
#include "ctexport/ct_span_walk.h"
#include "ctmeasure/ct_node_words.h"

namespace CT::Export {

namespace {

void put_flag(std::string_view name, JsonWriter& json) {
  json.key(name);
  json.boolean(true);
}

// One event a line.
class ChromeEvents {
 public:
  ChromeEvents(const Source& source, Values values, Writer& out)
      : frames_(source.trace, Frames::OpenSpans::like_others),
        names_(frames_, put_json_text),
        reader_(source.trace.storage()),
        add_data_(source.trace.file().add_data()),
        members_(values),
        out_(out) {}

  void begin(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
    if (measure.total_ns != 0) {
      put_begin(R"({"ph":"B","pid":1,"tid":1,"ts":)", measure.start_ns);
    } else {
      put_begin(R"({"ph":"i","s":"t","pid":1,"tid":1,"ts":)", measure.start_ns);
    }
    put_name(id, measure);
    put_args(reader_.read(id), measure);
    if (measure.has(Measure::has_memory)) put_memory(measure.start_ns, measure.memory);
  }

  void end(NodeId id, const Measure& measure, const OwnFigures& /*figures*/) {
    if (measure.total_ns != 0) {
      put_begin(R"({"ph":"E","pid":1,"tid":1,"ts":)", measure.end_ns());
      put_name(id, measure);
      out_.put('}');
    }
    if (!measure.has(Measure::has_delta)) return;
    put_memory(measure.end_ns(), measure.memory + static_cast<std::uint64_t>(measure.memory_delta));
  }

  void point(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
    const Node::Base& node = reader_.read(id);
    put_begin(R"({"ph":"i","s":"t","pid":1,"tid":1,"ts":)", measure.start_ns);
    out_.put(R"(,"name":")");
    put_point_name(node);
    out_.put(R"(","cat":")");
    out_.put(kind_of(node.type()));
    out_.put('"');
    put_args(node, measure);
    if (measure.has(Measure::has_memory)) put_memory(measure.start_ns, measure.memory);
  }

  // What a viewer calls the only thread.
  void put_titles(const Trace& trace) {
    put_title("process_name", "PHP");
    put_title("thread_name", request_title(trace));
  }

 private:
  void put_title(std::string_view what, std::string_view title);
  void put_begin(std::string_view start, std::int64_t at);
  void put_name(NodeId id, const Measure& measure);
  void put_point_name(const Node::Base& node);
  void put_args(const Node::Base& node, const Measure& measure);
  void put_place(const Checkpoint::Base& record, JsonWriter& json);
  void put_memory(std::int64_t at, std::uint64_t bytes);

  Frames frames_;
  FrameNames names_;
  NodeReader reader_;
  const Section& add_data_;
  RenderedTexts files_;
  NodeMembers members_;
  Writer& out_;
  std::uint64_t memory_ = 0;  // as the counter last said
  bool is_first_ = true;
};

void ChromeEvents::put_title(std::string_view what, std::string_view title) {
  put_begin(R"({"ph":"M","pid":1,"tid":1,"ts":)", 0);
  out_.put(R"(,"name":")");
  out_.put(what);
  out_.put(R"(","args":{"name":")");
  put_json_text(out_, title);
  out_.put(R"("}})");
}

// Times are microseconds with three decimals: whole nanoseconds.
void ChromeEvents::put_begin(std::string_view start, std::int64_t at) {
  constexpr std::size_t longest_number = 21;
  constexpr std::uint64_t unit = 1000;
  char* p = out_.room(2 + start.size() + longest_number);
  if (!is_first_) *p++ = ',';
  is_first_ = false;
  *p++ = '\n';
  std::memcpy(p, start.data(), start.size());
  const auto nanoseconds = static_cast<std::uint64_t>(at);
  p = write_decimal(p + start.size(), nanoseconds / unit);
  const auto rest = static_cast<std::uint32_t>(nanoseconds % unit);
  *p++ = '.';
  *p++ = static_cast<char>('0' + rest / 100);
  out_.advance(write_2_digits(p, rest % 100));
}

void ChromeEvents::put_name(NodeId id, const Measure& measure) {
  const std::int32_t frame = frames_.of(id, measure);
  out_.put(R"(,"name":")");
  names_.put(frame, out_);
  const Checkpoint::Function* const function = frames_[frame].function;
  out_.put(R"(","cat":")");
  out_.put(function != nullptr && !function->is_user() ? std::string_view("builtin")
                                                       : kind_of(frames_[frame].type));
  out_.put('"');
}

void ChromeEvents::put_point_name(const Node::Base& node) {
  if (const auto event = node.begin_as<Checkpoint::UserEvent>();
      event && !without_byte_order_mark(event->event_name().view()).empty()) {
    return put_json_text(out_, event->event_name().view());
  }
  if (const auto error = node.begin_as<Checkpoint::ScriptError>();
      error && !error_level(error->error_num()).empty()) {
    return out_.put(error_level(error->error_num()));
  }
  out_.put(kind_of(node.type()));
}

void ChromeEvents::put_args(const Node::Base& node, const Measure& measure) {
  JsonWriter json(out_, JsonWriter::Form::compact);
  out_.put(R"(,"args":)");
  json.begin_object();
  json.key("id");
  json.number(std::int64_t{node.id()});
  if (measure.has(Measure::open)) put_flag("open", json);
  if (measure.has(Measure::untimed) || measure.has(Measure::end_untimed)) put_flag("untimed", json);
  if (measure.has(Measure::moved)) put_flag("moved", json);
  put_place(node.begin(), json);
  if (measure.has(Measure::is_span) && measure.has(Measure::has_delta)) {
    json.key("memory_delta");
    Checkpoint::write_exact(measure.memory_delta, json);
  }
  members_.write_details(node, json);
  members_.write_values(node, json);
  json.end_object();
  out_.put('}');
}

void ChromeEvents::put_place(const Checkpoint::Base& record, JsonWriter& json) {
  const unsigned char* const place = record.filename_place();
  if (place == nullptr) return;
  json.key("file");
  out_.put('"');
  files_.put(
      place, out_, [&] { return RenderedTexts::is_short(add_data_, place); },
      [&](Writer& out) { put_json_text(out, record.filename().view()); });
  out_.put('"');
  json.key("line");
  json.number(std::int64_t{record.line_no()});
}

// Only where it is another one than before.
void ChromeEvents::put_memory(std::int64_t at, std::uint64_t bytes) {
  if (bytes == memory_) return;
  memory_ = bytes;
  put_begin(R"({"ph":"C","pid":1,"ts":)", at);
  out_.put(R"(,"name":"memory","args":{"bytes":)");
  put_unsigned(out_, bytes);
  out_.put("}}");
}

}  // namespace

void write_chrome(const Source& source, const Options& options, Writer& out) {
  JsonWriter json(out, JsonWriter::Form::compact);
  json.begin_object();
  json.key("displayTimeUnit");
  json.word("ns");
  json.key("otherData");
  json.begin_object();
  write_origin(source, json);
  json.end_object();
  json.key("traceEvents");
  out.put('[');
  ChromeEvents events(source, options.values, out);
  events.put_titles(source.trace);
  walk_spans(source, events);
  out.put("\n]}\n");
}

}  // namespace CT::Export
