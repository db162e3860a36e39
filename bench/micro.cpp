// SPDX-License-Identifier: MIT
//
// The functions that the profile of large traces shows, and what programs do a million times, one
// by one. The column "each" tells the time of one item.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/ct_trace.h"
#include "codetrace/model/ct_records.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_text.h"
#include "codetrace/render/ct_writer.h"
#include "ctwrite/ct_trace_writer.h"
#include "php_like.h"

namespace CT::Bench {

namespace {

constexpr std::size_t calls = 10'000;

std::string php_like_bytes() {
  Test::TraceBuilder trace;
  add_php_like_request(calls, trace);
  return trace.build();
}

const File& php_like_file() {
  static const std::string bytes = php_like_bytes();
  static File file{QString()};
  if (!file.is_open()) {
    file.open(static_cast<const unsigned char*>(static_cast<const void*>(bytes.data())),
              bytes.size());
  }
  return file;
}

void per_item(benchmark::State& state, std::int64_t items) {
  state.SetItemsProcessed(state.iterations() * items);
  state.counters["each"] =
      benchmark::Counter(static_cast<double>(items), benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

void header_words(benchmark::State& state) {
  std::int64_t count = 0;
  for (auto _ : state) {
    CheckpointView view(php_like_file());
    for (count = 0; view.step(); ++count) benchmark::DoNotOptimize(view.type());
  }
  per_item(state, count);
}
BENCHMARK(header_words);

// The functions and classes of the whole file.
std::shared_ptr<Entities> known_entities() {
  auto entities = Entities::make(php_like_file());
  for (CheckpointView view(php_like_file()); view.step();) {
    static_cast<void>(Checkpoint::Base::sighted(view, *entities));
  }
  return entities;
}

void common_fields(benchmark::State& state) {
  const auto entities = known_entities();
  std::int64_t count = 0;
  for (auto _ : state) {
    CheckpointView view(php_like_file());
    for (count = 0; view.step(); ++count) {
      benchmark::DoNotOptimize(Checkpoint::Base(view, *entities).memory());
    }
  }
  per_item(state, count);
}
BENCHMARK(common_fields);

// Records of all kinds with their values stepped over, without the tree.
void records(benchmark::State& state) {
  std::int64_t count = 0;
  for (auto _ : state) {
    const auto entities = Entities::make(php_like_file());
    CheckpointView view(php_like_file());
    for (count = 0; view.step(); ++count) {
      benchmark::DoNotOptimize(Checkpoint::Base::sighted(view, *entities));
    }
  }
  per_item(state, count);
}
BENCHMARK(records);

void value_decode(benchmark::State& state) {
  const auto entities = known_entities();
  Checkpoint::ValueTape tape;
  std::int64_t count = 0;
  for (auto _ : state) {
    count = 0;
    CheckpointView view(php_like_file());
    while (view.step()) {
      const Checkpoint::Base record(view, *entities);
      const auto call = Checkpoint::record_as<Checkpoint::FunctionCall>(record);
      if (!call) continue;
      benchmark::DoNotOptimize(call->args(tape));
      count += tape.size();
    }
  }
  per_item(state, count);
}
BENCHMARK(value_decode);

// The walk with its tree: an item is a call that is pushed and popped.
void tree(benchmark::State& state) {
  for (auto _ : state) {
    Storage storage(php_like_file());
    read_checkpoints(php_like_file(), storage);
    benchmark::DoNotOptimize(storage.node_count());
  }
  per_item(state, calls);
}
BENCHMARK(tree);

constexpr std::size_t million = 1'000'000;
constexpr int pairs_in_array = 1000;

// Calls nested up to sixteen deep, without values.
std::string million_nodes_bytes() {
  Test::TraceBuilder trace;
  const Test::Ref function = trace.function({.name = "f"});
  trace.add(Test::CheckpointDraft::startup());
  std::vector<Test::Ref> open;
  for (std::size_t node = 1; node != million; ++node) {
    open.push_back(trace.add(Test::CheckpointDraft::function_call(function)));
    while (open.size() > node * 7 % 16) {
      trace.add(Test::CheckpointDraft::function_return(open.back()));
      open.pop_back();
    }
  }
  return trace.build();
}

Trace opened(const std::string& bytes) {
  Trace trace;
  const void* const begin = bytes.data();
  if (!trace.open(static_cast<const unsigned char*>(begin), bytes.size())) std::abort();
  return trace;
}

const Trace& million_nodes() {
  static const Trace trace = opened(million_nodes_bytes());
  return trace;
}

// Every node, seen by its place in the tree alone.
template <class Look>
void structure(benchmark::State& state, Look look) {
  const Trace& trace = million_nodes();
  static_cast<void>(trace.depth(0));  // the first call finds the shape
  for (auto _ : state) {
    for (NodeId id = 0; id != trace.node_count(); ++id) benchmark::DoNotOptimize(look(trace, id));
  }
  per_item(state, trace.node_count());
}
BENCHMARK_CAPTURE(structure, parent,
                  [](const Trace& trace, NodeId id) { return trace.parent(id); });
BENCHMARK_CAPTURE(structure, depth, [](const Trace& trace, NodeId id) { return trace.depth(id); });
BENCHMARK_CAPTURE(structure, last, [](const Trace& trace, NodeId id) { return trace.last(id); });
BENCHMARK_CAPTURE(structure, next_sibling,
                  [](const Trace& trace, NodeId id) { return trace.next_sibling(id); });
BENCHMARK_CAPTURE(structure, type, [](const Trace& trace, NodeId id) { return trace.type(id); });
BENCHMARK_CAPTURE(structure, begin_offset,
                  [](const Trace& trace, NodeId id) { return trace.begin_offset(id); });
BENCHMARK_CAPTURE(structure, end_offset,
                  [](const Trace& trace, NodeId id) { return trace.end_offset(id); });
BENCHMARK_CAPTURE(structure, all_of_them, [](const Trace& trace, NodeId id) {
  return trace.parent(id) ^ static_cast<NodeId>(trace.depth(id)) ^ trace.last(id) ^
         trace.next_sibling(id) ^ static_cast<NodeId>(trace.type(id)) ^
         static_cast<NodeId>(trace.begin_offset(id) ^ trace.end_offset(id));
});

// The pairs of an array with texts as keys.
std::string long_array_bytes() {
  Test::TraceBuilder trace;
  std::vector<Test::value::Pair> pairs;
  for (int i = 0; i != pairs_in_array; ++i) {
    pairs.emplace_back(Test::value::string("key" + std::to_string(i)), Test::value::integer(i));
  }
  trace.add(Test::CheckpointDraft::startup());
  trace.add(Test::CheckpointDraft::function_call(trace.function({.name = "f"}),
                                                 {Test::value::map(pairs)}));
  return trace.build();
}

// What `look` sees of each pair.
template <class Look>
void elements(benchmark::State& state, Look look) {
  static const Trace trace = opened(long_array_bytes());
  const Checkpoint::KVal array =
      trace.node(1).begin_as<Checkpoint::FunctionCall>().value().args().at(0);
  for (auto _ : state) {
    for (const Checkpoint::Elements::Pair& pair : array.elements()) {
      benchmark::DoNotOptimize(look(pair));
    }
  }
  per_item(state, pairs_in_array);
}
BENCHMARK_CAPTURE(elements, step,
                  [](const Checkpoint::Elements::Pair& pair) { return pair.value.item(); });
BENCHMARK_CAPTURE(elements, key_and_number, [](const Checkpoint::Elements::Pair& pair) {
  return static_cast<std::int64_t>(pair.key.string().length) + pair.value.as_long();
});

constexpr std::string_view plain_text = "App\\Service\\Handler154::processRequest529";
constexpr std::string_view special_text = "caf\xC3\xA9 \"au lait\"\n\tand a long line behind it";

void text(benchmark::State& state, void (*put)(Writer&, std::string_view),
          std::string_view stored) {
  MemoryWriter out;
  for (auto _ : state) {
    out.clear();
    put(out, stored);
    benchmark::DoNotOptimize(out.view().data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stored.size()));
}
BENCHMARK_CAPTURE(text, validate_and_copy, put_text, plain_text);
BENCHMARK_CAPTURE(text, validate_and_copy_special, put_text, special_text);
BENCHMARK_CAPTURE(text, json, put_json_text, plain_text);
BENCHMARK_CAPTURE(text, json_special, put_json_text, special_text);
BENCHMARK_CAPTURE(text, escaped_special, put_escaped_text, special_text);

void number(benchmark::State& state, void (*put)(Writer&, double), double value) {
  MemoryWriter out;
  for (auto _ : state) {
    out.clear();
    put(out, value);
    benchmark::DoNotOptimize(out.view().data());
  }
}
BENCHMARK_CAPTURE(number, json_milliseconds, put_double_json, 2.542404);
BENCHMARK_CAPTURE(number, json_any, put_double_json, 0.1234567890123);
BENCHMARK_CAPTURE(number, text_price, put_double_text, 603.19);
BENCHMARK_CAPTURE(number, text_any, put_double_text, 0.1234567890123);

// A call with all common fields and two arguments, and its return.
void written_calls(benchmark::State& state) {
  using Checkpoint::Type;
  for (auto _ : state) {
    Write::TraceWriter writer{Write::Options()};
    const Write::Reference file = writer.text("/srv/app/index.php");
    const Write::Reference function = writer.function({.name = writer.text("strlen")});
    for (std::size_t i = 0; i != calls; ++i) {
      writer.begin(Type::FUNCTION_CALL, {.timestamp = Write::Timestamp{1'700'000'000, 1},
                                         .memory = i,
                                         .location = Write::Location{file, 7}});
      writer.reference(function);
      writer.string(plain_text);
      writer.integer(1);
      const auto call = writer.end();
      writer.begin(Type::FUNCTION_RETURN);
      writer.reference(call.value_or(0));
      writer.integer(2);
      writer.end();
    }
    benchmark::DoNotOptimize(writer.data_size());
  }
  per_item(state, calls);
}
BENCHMARK(written_calls);

void written_values(benchmark::State& state) {
  Write::TraceWriter writer{Write::Options()};
  for (auto _ : state) {
    writer.begin(Checkpoint::Type::FUNCTION_CALL);
    writer.reference(0);
    writer.begin_array();
    for (std::size_t i = 0; i != calls; ++i) writer.integer(7);
    writer.end_array();
    writer.abandon();
  }
  per_item(state, calls);
}
BENCHMARK(written_values);

}  // namespace
}  // namespace CT::Bench

BENCHMARK_MAIN();
