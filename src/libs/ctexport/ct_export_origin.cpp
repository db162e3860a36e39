// SPDX-License-Identifier: MIT
#include "ctexport/ct_export_origin.h"

#include "codetrace/ct_version.h"
#include "ctexport/ct_one_line.h"
#include "ctmeasure/ct_request_facts.h"

namespace CT::Export {

namespace {

constexpr std::size_t longest_title = 200;  // bytes of the URL

void put_shortened(Writer& out, std::string_view text) {
  const std::size_t size = whole_characters(text, longest_title);
  put_one_line(out, text.substr(0, size));
  if (size != text.size()) out.put("\xE2\x80\xA6");
}

void put_title(const Checkpoint::Startup& begin, Writer& out) {
  const Checkpoint::String uri = begin.orig_uri().is_empty() ? begin.url() : begin.orig_uri();
  if (uri.is_empty()) return;
  if (!begin.method().is_empty()) {
    put_shortened(out, begin.method().view());
    out.put(' ');
  }
  put_shortened(out, uri.view());
}

}  // namespace

std::string request_title(const Trace& trace) {
  MemoryWriter title;
  if (trace.node_count() != 0) {
    const Node::Base request = trace.node(0);
    if (const auto begin = request.begin_as<Checkpoint::Startup>()) put_title(*begin, title);
  }
  return title.size() != 0 ? std::string(title.view()) : "request";
}

std::string started_ns(const Trace& trace) {
  if (trace.node_count() == 0) return {};
  const Node::Base request = trace.node(0);
  if (!request.begin().has_timestamp()) return {};
  // Of what 64 bits do not hold, which only damage makes, there is none.
  constexpr std::int64_t second = 1'000'000'000;
  const KTime::Timestamp time = request.begin().timestamp();
  std::int64_t nanoseconds = 0;
  if (__builtin_mul_overflow(time.seconds, second, &nanoseconds) ||
      __builtin_add_overflow(nanoseconds, std::int64_t{time.nanoseconds}, &nanoseconds)) {
    return {};
  }
  return std::to_string(nanoseconds);
}

Origin origin_of(const Source& source) {
  const Measures::Counts& counts = source.measures.counts();
  Origin origin;
  origin.started_ns = started_ns(source.trace);
  origin.request_id = source.trace.file().header().request_id;
  origin.open = counts.open;
  origin.untimed = counts.untimed;
  origin.moved = counts.moved;
  origin.damaged = damaged_places(source.trace.summary());
  return origin;
}

void write_origin(const Source& source, JsonWriter& out) {
  const Origin origin = origin_of(source);
  out.key("exporter");
  out.word("cttool " CODETRACE_VERSION_STRING);
  out.key("trace");
  out.text(source.path);
  out.key("started_ns");
  origin.started_ns.empty() ? out.null() : out.word(origin.started_ns);
  out.key("request_id");
  out.number(std::int64_t{origin.request_id});
  out.key("open");
  out.number(origin.open);
  out.key("untimed");
  out.number(origin.untimed);
  out.key("moved");
  out.number(origin.moved);
  out.key("damaged");
  out.number(origin.damaged);
}

}  // namespace CT::Export
