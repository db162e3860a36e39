// SPDX-License-Identifier: MIT
//
// make_hostile_trace FILE: a trace in which every name, text and value tries to get out of the
// place where a page shows it, and a few are so long that a page could stop.
#include <array>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "process.h"
#include "trace_builder.h"

namespace CT::Test {

namespace {

constexpr std::string_view with_nul("nul\0<script>broken()</script>", 29);
constexpr std::array<std::string_view, 14> attacks = {
    "</script><script>broken()</script>",
    "<!--<script>",
    "--><img src=x onerror=broken()>",
    "\" onmouseover=\"broken()\" x=\"",
    "' autofocus onfocus='broken()",
    "javascript:broken()",
    "data:text/html,<script>broken()</script>",
    "https://198.51.100.1/pixel.png",
    "<link rel=stylesheet href=//198.51.100.1/a.css><style>@import '//198.51.100.1/b.css';</style>",
    "<meta http-equiv=refresh content=\"0;url=https://198.51.100.1/\">",
    "line\xE2\x80\xA8separator\xE2\x80\xA9paragraph",
    "\xE2\x80\xAE"
    "drawkcab\xE2\x81\xA6isolated\xE2\x80\xAC",
    "\xFF\xC3(\xED\xA0\x80 not UTF-8",
    with_nul,
};
constexpr std::size_t long_size = 10'000'000;

// One call with the attack as its name, its class, its argument, its key, its result or exception.
void add_attack(TraceBuilder& trace, std::string_view attack, std::uint64_t time) {
  const std::string text(attack);
  const Ref klass = trace.klass({.name = attack, .file = attack, .line = 1});
  const Ref method =
      trace.function({.name = attack, .class_entry = klass, .file = attack, .line = 2});
  const Ref include =
      trace.add(CheckpointDraft::include_call(trace.text(attack)).time(time, 100).memory(1000));
  const std::vector<Fields> arguments = {
      value::string(attack), value::map({{value::string(attack), value::string(attack)}}),
      value::resource(trace.text(attack), 7)};
  const Ref call =
      trace.add(CheckpointDraft::method_call(method, value::object(klass, 1), arguments)
                    .time(time, 200)
                    .memory(2000)
                    .location(trace.text(attack), 3));
  trace.add(CheckpointDraft::sapi_header(0, Fields().cut_string("X-A: " + text)).time(time, 300));
  trace.add(CheckpointDraft::sapi_send_headers(200, attack).time(time, 350));
  const Ref write =
      trace.add(CheckpointDraft::sapi_write_start(Fields().cut_string(text)).time(time, 400));
  trace.add(CheckpointDraft::sapi_write_end(write).time(time, 410));
  trace.add(CheckpointDraft::script_error(2, attack).time(time, 500));
  trace.add(CheckpointDraft::user_event(trace.text(attack), 1).time(time, 600));
  trace.add(CheckpointDraft::function_exception(call, value::object(klass, 2)).time(time, 700));
  trace.add(CheckpointDraft::include_return(include).time(time, 800));
}

void add_query(TraceBuilder& trace, std::string_view attack, std::uint64_t time) {
  const Ref pdo = trace.klass({.type = internal_type, .name = "PDO"});
  const Ref query = trace.function({.type = internal_type, .name = "query", .class_entry = pdo});
  const std::string text = "select '" + std::string(attack) + "'";
  const Ref call = trace.add(
      CheckpointDraft::method_call(query, value::object(pdo, 1), {value::string(text)}).time(time));
  trace.add(CheckpointDraft::function_return(call, value::string(attack)).time(time, 50));
}

void add_long_texts(TraceBuilder& trace, std::uint64_t time) {
  std::string longest(long_size, 'x');
  longest.replace(long_size / 2, attacks[0].size(), attacks[0]);
  const Ref function = trace.function({.name = "long"});
  const Ref call =
      trace.add(CheckpointDraft::function_call(function, {value::string(longest)}).time(time));
  trace.add(CheckpointDraft::function_return(call, value::string(longest)).time(time, 1));
  const Ref write =
      trace.add(CheckpointDraft::sapi_write_start(Fields().cut_string(longest)).time(time, 2));
  trace.add(CheckpointDraft::sapi_write_end(write).time(time, 3));
  const std::string name(100'000, 'n');
  const Ref named =
      trace.add(CheckpointDraft::function_call(trace.function({.name = name})).time(time, 4));
  trace.add(CheckpointDraft::function_return(named).time(time, 5));
}

std::string hostile_trace() {
  TraceBuilder trace;
  const Ref page = trace.text("/<script>broken()</script>?\"'=javascript:broken()");
  const Ref host = trace.text("\"><script>broken()</script>");
  trace.add(CheckpointDraft::startup(page, page, host, trace.text("<b>GET")).time(1).memory(500));
  std::uint64_t time = 2;
  for (const std::string_view attack : attacks) {
    add_attack(trace, attack, time++);
    add_query(trace, attack, time++);
  }
  add_long_texts(trace, time++);
  trace.add(CheckpointDraft::shutdown().time(time).memory(3000));
  return trace.build();
}

}  // namespace

}  // namespace CT::Test

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::fprintf(stderr, "%s FILE\n", argv[0]);
    return 2;
  }
  CT::Test::write_file(argv[1], CT::Test::hostile_trace());
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
  return 2;
}
