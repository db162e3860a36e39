// SPDX-License-Identifier: MIT
//
// The functions that the profile of large traces shows, one by one.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/ct_walk.h"
#include "codetrace/model/ct_records.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_text.h"
#include "codetrace/render/ct_writer.h"
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

void common_fields(benchmark::State& state) {
  std::int64_t count = 0;
  for (auto _ : state) {
    CheckpointView view(php_like_file());
    for (count = 0; view.step(); ++count) {
      Cursor cursor;
      benchmark::DoNotOptimize(Checkpoint::Base(view, cursor, nullptr).memory());
    }
  }
  per_item(state, count);
}
BENCHMARK(common_fields);

// Records of all kinds with their values stepped over, without the tree.
void records(benchmark::State& state) {
  std::int64_t count = 0;
  for (auto _ : state) {
    EntityCache cache;
    Checkpoint::Record room;
    CheckpointView view(php_like_file());
    for (count = 0; view.step(); ++count) benchmark::DoNotOptimize(room.decode(view, &cache));
  }
  per_item(state, count);
}
BENCHMARK(records);

void value_decode(benchmark::State& state) {
  EntityCache cache;
  Checkpoint::ValueTape tape;
  std::int64_t count = 0;
  for (auto _ : state) {
    count = 0;
    Checkpoint::Record room;
    CheckpointView view(php_like_file());
    while (view.step()) {
      const Checkpoint::Base* record = room.decode(view, &cache);
      const auto* call = Checkpoint::record_as<Checkpoint::FunctionCall>(*record);
      if (call == nullptr) continue;
      call->decode_args(tape);
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

}  // namespace
}  // namespace CT::Bench

BENCHMARK_MAIN();
