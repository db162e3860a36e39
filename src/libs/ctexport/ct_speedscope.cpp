// SPDX-License-Identifier: MIT
//
// speedscope's own format: an evented profile of time, and one of memory in which a span is as wide
// as memory grew in it. Frames are listed behind the profiles, where all of them are known.
#include <cstring>

#include "codetrace/render/ct_digits.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_text.h"
#include "ctexport/ct_export_origin.h"
#include "ctexport/ct_format_writers.h"
#include "ctexport/ct_frames.h"
#include "ctexport/ct_span_walk.h"

namespace CT::Export {

namespace {

// One event a line.
class Events {
 public:
  explicit Events(Writer& out) : out_(out) {}

  void put(char kind, std::int32_t frame, std::int64_t at) {
    static constexpr std::string_view start = ",\n{\"type\":\"O\",\"frame\":";
    static constexpr std::string_view middle = R"(,"at":)";
    constexpr std::size_t kind_place = 11;
    constexpr std::size_t longest_numbers = 40;
    char* p = out_.room(start.size() + middle.size() + longest_numbers + 1);
    const std::size_t skipped = is_first_ ? 1 : 0;  // the comma
    is_first_ = false;
    std::memcpy(p, start.data() + skipped, start.size() - skipped);
    p[kind_place - skipped] = kind;
    p = write_decimal(p + start.size() - skipped, static_cast<std::uint64_t>(frame));
    std::memcpy(p, middle.data(), middle.size());
    p = write_decimal(p + middle.size(), static_cast<std::uint64_t>(at));
    *p++ = '}';
    out_.advance(p);
  }

 private:
  Writer& out_;
  bool is_first_ = true;
};

// Where the first chosen span begins and the last one ends.
struct Extent {
  std::int64_t first = 0;
  std::int64_t last = 0;
};

class TimeEvents {
 public:
  TimeEvents(Frames& frames, Writer& out) : frames_(frames), events_(out) {}

  void begin(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
    if (!has_begun_) extent_.first = measure.start_ns;
    has_begun_ = true;
    events_.put('O', frames_.of(id, measure), measure.start_ns);
  }
  void end(NodeId id, const Measure& measure, const OwnFigures& /*figures*/) {
    extent_.last = measure.end_ns();
    events_.put('C', frames_.of(id, measure), extent_.last);
  }
  void point(NodeId /*id*/, const Measure& /*measure*/, std::uint32_t /*depth*/) {}

  [[nodiscard]] const Extent& extent() const { return extent_; }

 private:
  Frames& frames_;
  Events events_;
  Extent extent_;
  bool has_begun_ = false;
};

// What grew in a span by itself stands at its end.
class MemoryEvents {
 public:
  MemoryEvents(Frames& frames, Writer& out) : frames_(frames), events_(out) {}

  void begin(NodeId id, const Measure& measure, std::uint32_t /*depth*/) {
    events_.put('O', frames_.of(id, measure), extent_.last);
  }
  void end(NodeId id, const Measure& measure, const OwnFigures& figures) {
    extent_.last = bounded_sum(extent_.last, figures.growth);
    events_.put('C', frames_.of(id, measure), extent_.last);
  }
  void point(NodeId /*id*/, const Measure& /*measure*/, std::uint32_t /*depth*/) {}

  [[nodiscard]] const Extent& extent() const { return extent_; }

 private:
  Frames& frames_;
  Events events_;
  Extent extent_;
};

template <class Sink>
void write_profile(const Source& source, Frames& frames, std::string_view name,
                   std::string_view unit, JsonWriter& json) {
  json.element();
  json.begin_object();
  json.key("type");
  json.word("evented");
  json.key("name");
  json.text(request_title(source.trace), name);
  json.key("unit");
  json.word(unit);
  json.key("events");
  json.out().put("[\n");
  Sink sink(frames, json.out());
  walk_spans(source, sink);
  json.out().put("\n]");
  json.key("startValue");
  json.number(sink.extent().first);
  json.key("endValue");
  json.number(sink.extent().last);
  json.end_object();
  json.out().put('\n');
}

void write_frames(const Frames& frames, JsonWriter& json) {
  json.begin_array();
  for (std::int32_t i = 0; i != frames.size() && json.ok(); ++i) {
    const Frame& frame = frames[i];
    json.element();
    json.out().put('\n');
    json.begin_object();
    json.key("name");
    json.out().put('"');
    frames.put_name(frame, json.out(), put_json_text);
    json.out().put('"');
    if (const Checkpoint::String file = frames.file(frame); !file.is_empty()) {
      json.key("file");
      json.text(file.view());
      json.key("line");
      json.number(std::int64_t{Frames::line(frame)});
    }
    json.end_object();
  }
  json.end_array();
}

}  // namespace

void write_speedscope(const Source& source, const Options& /*options*/, Writer& out) {
  Frames frames(source.trace, Frames::OpenSpans::by_themselves);
  JsonWriter json(out, JsonWriter::Form::compact);
  json.begin_object();
  json.key("$schema");
  json.word("https://www.speedscope.app/file-format-schema.json");
  write_origin(source, json);
  json.key("name");
  json.text(request_title(source.trace));
  json.key("activeProfileIndex");
  json.number(std::int64_t{0});
  json.key("profiles");
  json.begin_array();
  write_profile<TimeEvents>(source, frames, "", "nanoseconds", json);
  write_profile<MemoryEvents>(source, frames, " (memory growth)", "bytes", json);
  json.end_array();
  json.key("shared");
  json.begin_object();
  json.key("frames");
  write_frames(frames, json);
  json.end_object();
  json.end_object();
  out.put('\n');
}

}  // namespace CT::Export
