// SPDX-License-Identifier: MIT
//
// A request that is whole but for what a test does to it, and lists of such things with the codes
// of what a check is to find then.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "trace_builder.h"

namespace CT::Test {

// It has begun, and so has a call; finish() ends both.
class Request {
 public:
  explicit Request(ByteOrder order) : trace(order) {
    function = trace.function({.name = "run", .file = "/run.php", .line = 1});
    klass = trace.klass({.name = "Note", .file = "/note.php", .line = 2});
    text = trace.text("/");
    startup = trace.add(CheckpointDraft::startup(text).time(10).memory(1000));
    call = trace.add(CheckpointDraft::function_call(function, {value::object(klass, 1)}).time(11));
  }
  std::string finish() {
    trace.add(CheckpointDraft::function_return(call).time(12));
    trace.add(CheckpointDraft::shutdown());
    return trace.build();
  }
  // A call with its end.
  void ended(const CheckpointDraft& draft) {
    trace.add(CheckpointDraft::function_return(trace.add(draft)));
  }

  TraceBuilder trace;
  Ref function = 0;
  Ref klass = 0;
  Ref text = 0;
  Ref startup = 0;
  Ref call = 0;
};

struct Wrong {
  const char* codes;  // as codes_of() has them; nothing is wrong if there are none
  // What is done before the request ends.
  std::function<void(Request&)> before = {};
  // What is done to the file that is built then, if it is not left as it is.
  std::function<std::string(Request&)> after = {};
};

inline std::string built(const Wrong& wrong, ByteOrder order) {
  Request request(order);
  if (wrong.before) wrong.before(request);
  const std::string whole = request.finish();
  return wrong.after ? wrong.after(request) : whole;
}

// One more checkpoint makes it wrong.
inline Wrong one_more(const char* codes, const std::function<CheckpointDraft(Request&)>& draft) {
  return {codes, [draft](Request& request) { request.trace.add(draft(request)); }};
}

// The same for a call, which gets its end.
inline Wrong one_call(const char* codes, const std::function<CheckpointDraft(Request&)>& draft) {
  return {codes, [draft](Request& request) { request.ended(draft(request)); }};
}

}  // namespace CT::Test
