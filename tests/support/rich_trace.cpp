// SPDX-License-Identifier: MIT
#include "rich_trace.h"

#include <vector>

namespace CT::Test {

namespace {

// A value of every kind, with an unknown class, a cut array and an array that was not followed.
std::vector<Fields> values(Ref klass, Ref other_class, Ref resource_type) {
  const Fields nested = value::map({{value::integer(0), value::list({value::null()})},
                                    {value::string("k"), value::cut_marker()},
                                    {value::real(1.5), value::object(0, 3)}});
  const Fields cut = value::map({{value::integer(0), value::boolean(true)},
                                 {value::cut_marker(), value::null()},
                                 {value::integer(2), value::object(other_class, 9)}});
  return {value::undef(),
          value::null(),
          value::boolean(false),
          value::integer(-5),
          value::real(0.1),
          value::cut_string("a\"\xEF\xBB\xBF\xC3", 100),
          nested,
          cut,
          value::object(klass, 7),
          value::resource(resource_type, 8)};
}

}  // namespace

TraceBuilder rich_trace(ByteOrder order) {
  TraceBuilder trace(order);
  const Ref klass = trace.klass({.name = "App\\A", .flags = 1, .file = "/a.php", .line = 2});
  const Ref other = trace.klass({.type = internal_type, .name = "B"});
  const Ref run = trace.function(
      {.name = "run", .class_entry = klass, .flags = 3, .file = "/a.php", .line = 4});
  const Ref strlen = trace.function({.type = internal_type, .name = "strlen"});
  const Ref construct = trace.function({.name = "__construct", .class_entry = other});
  const Ref file = trace.text("/i.php");

  trace.add(CheckpointDraft::startup(trace.text("/u"), trace.text("/\xFF"), 0, trace.text("GET"))
                .time(10, 999'999'999)
                .memory(1000)
                .location(file, 1));
  const Ref include = trace.add(CheckpointDraft::include_call(file).time(11).memory(900));
  const Ref call = trace.add(
      CheckpointDraft::function_call(strlen, values(klass, other, trace.text("stream"))).time(12));
  const Ref method = trace.add(
      CheckpointDraft::method_call(run, value::object(klass, 1), {value::null()}).memory(2000));
  trace.add(CheckpointDraft::raw(20, Fields().u8(1)));
  trace.add(CheckpointDraft::raw(16));
  trace.add(CheckpointDraft::user_event(trace.text("%1"), 3).time(12, 500));
  trace.add(CheckpointDraft::function_return(method, value::string("r")).memory(2100));
  const Ref made = trace.add(CheckpointDraft::method_call(construct, value::object(other, 2)));
  trace.add(CheckpointDraft::function_exception(made, value::object(other, 3)));
  trace.add(CheckpointDraft::function_call(strlen));  // never ends
  trace.add(CheckpointDraft::function_return(call, value::list({value::integer(1)})).time(13));
  trace.add(CheckpointDraft::include_exception(include, value::object(klass, 4)).time(14));
  trace.add(CheckpointDraft::include_return(trace.add(CheckpointDraft::include_call(file))));
  trace.add(CheckpointDraft::sapi_header(0, Fields().cut_string("X: 1")));
  trace.add(CheckpointDraft::sapi_header(3));
  trace.add(CheckpointDraft::sapi_header(9));
  trace.add(CheckpointDraft::sapi_send_headers(200, "OK"));
  const Ref write = trace.add(CheckpointDraft::sapi_write_start(Fields().cut_string("<b>\n", 50)));
  trace.add(CheckpointDraft::sapi_flush());
  trace.add(CheckpointDraft::sapi_write_end(write));
  trace.add(CheckpointDraft::script_error(8, "it's"));
  trace.add(CheckpointDraft::script_exit().location(0, 5));
  trace.add(CheckpointDraft::shutdown().time(20).memory(1500));
  return trace;
}

}  // namespace CT::Test
