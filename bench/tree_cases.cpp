// SPDX-License-Identifier: MIT
#include "worst_cases.h"

namespace CT::Bench {

namespace {

using Test::CheckpointDraft;
using Test::Fields;
using Test::Ref;
using Test::TraceBuilder;

// Opens `n` calls and returns where they begin; each takes the same number of bytes.
struct Calls {
  Ref first;
  Ref distance;
  [[nodiscard]] Ref at(std::size_t i) const { return first + i * distance; }
};

Calls add_calls(TraceBuilder& trace, Ref function, std::size_t n) {
  const CheckpointDraft call = CheckpointDraft::function_call(function);
  Calls calls{trace.data_end(), call.encode(trace.order()).size()};
  for (std::size_t i = 0; i != n; ++i) trace.add(call);
  return calls;
}

Ref begin(TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  return trace.function({.name = "f"});
}

void tiny(std::size_t n, TraceBuilder& trace) {
  begin(trace);
  for (std::size_t i = 0; i != n; ++i) trace.add(CheckpointDraft::script_exit());
}

// Header words of zeros: checkpoints that begin a request and have no payload.
void zeros(std::size_t n, TraceBuilder& trace) {
  trace.data(Fields().raw(std::string(4 * n, '\0')));
}

void unknown_types(std::size_t n, TraceBuilder& trace) {
  begin(trace);
  for (std::size_t i = 0; i != n; ++i) trace.add(CheckpointDraft::raw(31));
}

void open_calls(std::size_t n, TraceBuilder& trace) {
  const Calls calls = add_calls(trace, begin(trace), n);
  trace.add(CheckpointDraft::function_return(calls.at(0)));
  trace.add(CheckpointDraft::shutdown());
}

// Calls by the thousand, of which only the outermost returns.
void return_pops_many(std::size_t n, TraceBuilder& trace) {
  const Ref function = begin(trace);
  constexpr std::size_t group = 1000;
  for (std::size_t i = 0; i < n; i += group) {
    const Calls calls = add_calls(trace, function, group);
    trace.add(CheckpointDraft::function_return(calls.at(0)));
  }
}

void return_pops_none(std::size_t n, TraceBuilder& trace) {
  const Ref function = begin(trace);
  for (std::size_t i = 0; i != n; ++i) {
    const Calls calls = add_calls(trace, function, 1);
    trace.add(CheckpointDraft::function_return(calls.at(0)));
  }
}

void nested_returns(std::size_t n, TraceBuilder& trace) {
  const Calls calls = add_calls(trace, begin(trace), n);
  for (std::size_t i = n; i-- != 0;) trace.add(CheckpointDraft::function_return(calls.at(i)));
}

// The outermost first: it closes all the others, and the next one finds its call closed, which
// empties the stack.
void returns_in_call_order(std::size_t n, TraceBuilder& trace) {
  const Calls calls = add_calls(trace, begin(trace), n);
  for (std::size_t i = 0; i != n; ++i) trace.add(CheckpointDraft::function_return(calls.at(i)));
}

// Returns of includes that name calls all over the trace: each is looked up and refused.
void wrong_returns(std::size_t n, TraceBuilder& trace) {
  const Calls calls = add_calls(trace, begin(trace), n);
  for (std::size_t i = 0; i != n; ++i) {
    trace.add(CheckpointDraft::include_return(calls.at(i * 7919 % n)));
  }
}

// Each function of a class of its own, each called once with an object of it.
void many_classes(std::size_t n, TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  for (std::size_t i = 0; i != n; ++i) {
    std::string name = "C";
    name += std::to_string(i);
    const Ref class_entry = trace.klass({.name = name, .file = "c.php", .line = 1});
    const Ref function =
        trace.function({.name = "f", .class_entry = class_entry, .file = "c.php", .line = 2});
    const CheckpointDraft call =
        CheckpointDraft::method_call(function, Test::value::object(class_entry, 1));
    trace.add(CheckpointDraft::function_return(trace.add(call)));
  }
}

}  // namespace

const std::vector<WorstCase>& tree_cases() {
  static const std::vector<WorstCase> cases = {
      {"tiny", "checkpoints without payload", 1000000, "", tiny},
      {"zeros", "checkpoints of four zeros", 8000000, "", zeros},
      {"unknown_types", "checkpoints of an unknown type", 500000, "", unknown_types},
      {"open_calls", "calls inside each other, the outermost returns", 500000, "T", open_calls},
      {"return_pops_many", "calls, one in a thousand returns", 500000, "T", return_pops_many},
      {"return_pops_none", "calls that return at once", 500000, "", return_pops_none},
      {"nested_returns", "calls inside each other that all return", 300000, "T", nested_returns},
      {"returns_in_call_order", "calls inside each other, the outermost returns first", 300000, "T",
       returns_in_call_order},
      {"wrong_returns", "calls, and returns of includes that name them", 300000, "T",
       wrong_returns},
      {"many_classes", "classes, functions, calls and objects", 100000, "", many_classes},
  };
  return cases;
}

}  // namespace CT::Bench
