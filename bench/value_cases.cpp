// SPDX-License-Identifier: MIT
#include "bytes.h"
#include "worst_cases.h"

namespace CT::Bench {

namespace {

using Test::CheckpointDraft;
using Test::Ref;
using Test::TraceBuilder;

Ref call(TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  return trace.add(CheckpointDraft::function_call(trace.function({.name = "f"})));
}

// What one call returned.
void add_returned(TraceBuilder& trace, const Bytes& value) {
  const Ref start = call(trace);
  trace.add(CheckpointDraft::function_return(start, value.fields()));
}

// Levels of six bytes: an array of one pair, the next level being its value, its key, or either in
// turn.
enum class Next { value, key, either };

Bytes nested(std::size_t levels, Next next) {
  const auto in_key = [next](std::size_t level) {
    return next == Next::key || (next == Next::either && level % 2 == 1);
  };
  Bytes bytes;
  for (std::size_t level = 0; level != levels; ++level) {
    bytes.array(1);
    if (!in_key(level)) bytes.null();
  }
  bytes.null();
  for (std::size_t level = levels; level-- != 0;) {
    if (in_key(level)) bytes.null();
  }
  return bytes;
}

void deep_values(std::size_t n, TraceBuilder& trace) {
  add_returned(trace, nested(n, Next::value));
}
void deep_keys(std::size_t n, TraceBuilder& trace) { add_returned(trace, nested(n, Next::key)); }
void deep_either(std::size_t n, TraceBuilder& trace) {
  add_returned(trace, nested(n, Next::either));
}

void deep_lists(std::size_t n, TraceBuilder& trace) {
  Bytes bytes;
  for (std::size_t i = 0; i != n; ++i) bytes.array(1).integer(0);
  add_returned(trace, bytes.null());
}

void deep_this(std::size_t n, TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  trace.add(
      CheckpointDraft::method_call(trace.function({.name = "f"}), nested(n, Next::value).fields()));
}

void deep_include(std::size_t n, TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  const Ref start = trace.add(CheckpointDraft::include_call(trace.text("i")));
  trace.add(CheckpointDraft::include_exception(start, nested(n, Next::value).fields()));
}

void long_list(std::size_t n, TraceBuilder& trace) {
  Bytes bytes;
  bytes.array(n);
  for (std::size_t i = 0; i != n; ++i) bytes.integer(i).null();
  add_returned(trace, bytes);
}

// Doubles with many digits of both signs of the exponent.
void long_doubles(std::size_t n, TraceBuilder& trace) {
  Bytes bytes;
  bytes.array(n);
  std::uint64_t bits = 1;
  for (std::size_t i = 0; i != n; ++i) {
    bits = bits * 6364136223846793005U + 1442695040888963407U;
    bytes.integer(i).real(bits);
  }
  add_returned(trace, bytes);
}

void many_arguments(std::size_t n, TraceBuilder& trace) {
  Bytes bytes;
  bytes.u64(trace.function({.name = "f"})).u32(static_cast<std::uint32_t>(n));
  for (std::size_t i = 0; i != n; ++i) bytes.null();
  trace.add(CheckpointDraft::startup());
  trace.add(CheckpointDraft::raw(2, bytes.fields()));
}

// Each byte becomes a replacement character of three.
void bad_utf8(std::size_t n, TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  trace.add(CheckpointDraft::sapi_write_start(Test::Fields().cut_string(std::string(n, '\xE2'))));
}

// A name that is nothing but markers, which take the sequence number.
void event_markers(std::size_t n, TraceBuilder& trace) {
  std::string name;
  for (std::size_t i = 0; i != n; ++i) name += "%1";
  trace.add(CheckpointDraft::startup());
  trace.add(CheckpointDraft::user_event(trace.text(name), 7));
}

}  // namespace

const std::vector<WorstCase>& value_cases() {
  static const std::vector<WorstCase> cases = {
      {"deep_values", "levels of arrays, each the value of a pair", 1398000, "J", deep_values},
      {"deep_lists", "levels of lists", 599000, "J", deep_lists},
      {"deep_keys", "levels of arrays, each the key of a pair", 1398000, "", deep_keys},
      {"deep_either", "levels of arrays, value and key in turn", 1398000, "", deep_either},
      {"deep_this", "levels of arrays in $this", 1398000, "J", deep_this},
      {"deep_include", "levels of arrays in an include's exception", 1398000, "J", deep_include},
      {"long_list", "elements of a list", 838000, "", long_list},
      {"long_doubles", "elements of a list of random doubles", 466000, "", long_doubles},
      {"many_arguments", "arguments of a call", 8388000, "", many_arguments},
      {"bad_utf8", "bytes of a body that is not UTF-8", 8388000, "", bad_utf8},
      {"event_markers", "markers in an event's name", 2000000, "", event_markers},
  };
  return cases;
}

}  // namespace CT::Bench
