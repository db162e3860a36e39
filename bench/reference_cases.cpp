// SPDX-License-Identifier: MIT
//
// References, counts and lengths that lie, or that lead many records to the same bytes.
#include "bytes.h"
#include "worst_cases.h"

namespace CT::Bench {

namespace {

using Test::CheckpointDraft;
using Test::Fields;
using Test::Ref;
using Test::TraceBuilder;

// Records with a file name each, from another byte of one text.
void overlapping_locations(std::size_t n, TraceBuilder& trace) {
  const Ref text = trace.text(std::string(16 * n, 'p'));
  trace.add(CheckpointDraft::startup());
  for (std::size_t i = 0; i != n; ++i) {
    trace.add(CheckpointDraft::script_exit().location(text + i, 1));
  }
}

// Functions and their classes at every byte of an ADD DATA of one letter. It lies where every eight
// bytes of it are a reference to its start, so that each has all of it as its name.
void overlapping_descriptors(std::size_t n, TraceBuilder& trace) {
  constexpr Ref origin = 0x4141414141414141;
  trace = TraceBuilder(Test::ByteOrder::little, TraceBuilder::default_orig_data, origin);
  trace.add_data(Fields().raw(std::string(n + 64, 'A')));
  trace.add(CheckpointDraft::startup());
  for (std::size_t i = 0; i != n; ++i) {
    trace.add(CheckpointDraft::function_call(origin + i, {Test::value::object(origin + i, 1)}));
  }
}

// Every kind of reference to just outside, just inside, and far away.
void wild_references(std::size_t n, TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  const Ref first = trace.function({.name = "f"});
  const Ref start = TraceBuilder::default_orig_add_data;
  const Ref end = trace.add_data_end();
  const Ref data = TraceBuilder::default_orig_data;
  const Ref wild[] = {first, start, end - 1, end, start - 1, data, data + 1, 1, ~Ref{0}};
  for (std::size_t i = 0; i != n; ++i) {
    const Ref ref = wild[i % std::size(wild)];
    const CheckpointDraft specs[] = {
        CheckpointDraft::function_call(
            ref, {Test::value::object(ref, 1), Test::value::resource(ref, 1)}),
        CheckpointDraft::include_call(ref).location(ref, 1), CheckpointDraft::include_return(ref),
        CheckpointDraft::user_event(ref, 1)};
    trace.add(specs[i / std::size(wild) % std::size(specs)]);
  }
}

// Counts that no payload can hold, in calls that never end.
void lying_counts(std::size_t n, TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  const Ref function = trace.function({.name = "f"});
  const Fields array = Test::value::array_header(0x7FFFFFFF);
  const CheckpointDraft specs[] = {
      CheckpointDraft::call_with_count(function, std::nullopt, 0xFFFFFFFF, {}),
      CheckpointDraft::function_call(function, {array}),
      CheckpointDraft::call_with_count(function, array, 0x80000000, {array, array}),
      CheckpointDraft::function_call(function, {Test::value::array_header(-0x7FFFFFFF - 1)}),
  };
  for (std::size_t i = 0; i != n; ++i) trace.add(specs[i % std::size(specs)]);
}

// Lengths that no payload can hold.
void lying_lengths(std::size_t n, TraceBuilder& trace) {
  trace.add(CheckpointDraft::startup());
  const Fields lowest = Fields().u32(0x80000000);
  const CheckpointDraft specs[] = {
      CheckpointDraft::sapi_write_start(Fields(lowest).u32(0xFFFFFFFF)),
      CheckpointDraft::sapi_write_start(Fields(lowest).u32(2).raw("ab")),
      CheckpointDraft::sapi_header(0, Fields().u32(0x7FFFFFFF)),
      CheckpointDraft::sapi_header(0, lowest),
      CheckpointDraft::raw(13, Fields().u32(200).inline_text(~std::uint64_t{0}, "ab")),
      CheckpointDraft::raw(15, Fields().u32(1).inline_text(0x7FFFFFFF, "ab")),
  };
  for (std::size_t i = 0; i != n; ++i) trace.add(specs[i % std::size(specs)]);
}

}  // namespace

const std::vector<WorstCase>& reference_cases() {
  static const std::vector<WorstCase> cases = {
      {"overlapping_locations", "locations that share one text", 500000, "JD",
       overlapping_locations},
      {"overlapping_descriptors", "functions and classes that share all bytes", 300000, "TJD",
       overlapping_descriptors},
      {"wild_references", "records with wild references", 500000, "T", wild_references},
      {"lying_counts", "calls with impossible counts", 300000, "T", lying_counts},
      {"lying_lengths", "records with impossible lengths", 500000, "T", lying_lengths},
  };
  return cases;
}

std::vector<WorstCase> worst_cases() {
  std::vector<WorstCase> all;
  for (const auto* some : {&value_cases(), &key_cases(), &tree_cases(), &reference_cases()}) {
    all.insert(all.end(), some->begin(), some->end());
  }
  return all;
}

}  // namespace CT::Bench
