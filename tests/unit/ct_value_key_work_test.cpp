// SPDX-License-Identifier: MIT
//
// Keys that are made to cost time: names that are equal, or nearly so, or that begin alike, and far
// longer than the file when they are printed. Each of these took minutes of comparing letters; they
// take milliseconds now, so that the limits hold on slow machines and under sanitizers.
#include <gtest/gtest.h>

#include <bit>
#include <ctime>

#include "codetrace/render/ct_value_json.h"
#include "open_trace.h"

namespace CT::Checkpoint::Test {
namespace {

using namespace CT::Test;

// Takes no more than `room` bytes.
class SmallSink final : public Sink {
 public:
  explicit SmallSink(std::size_t room) : room_(room) {}
  bool write(std::string_view bytes) override {
    if (bytes.size() > room_) return false;
    room_ -= bytes.size();
    return true;
  }

 private:
  std::size_t room_;
};

// Processor time of the value in JSON, to a sink with that much room.
double seconds_to_print(TraceBuilder& trace, const CT::Test::Fields& value,
                        std::size_t room = 1 << 20) {
  trace.add(CheckpointDraft::function_return(0, value));
  OpenTrace open(trace);
  const auto record = open.record<FunctionReturn>();
  ValueTape tape;
  const ValueTape::Index root = record->value(tape).item();
  SmallSink sink(room);
  StreamWriter out(sink);
  JsonWriter json(out);
  const std::clock_t begin = std::clock();
  ValueJsonWriter().write(tape, root, json);
  return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

constexpr double limit = 3;

// Keys of sixteen names, chosen from two by the bits of the key's number.
double seconds_to_tell_apart(const std::string& one, const std::string& other) {
  TraceBuilder trace;
  const Ref names[] = {trace.new_text(one), trace.new_text(other)};
  std::vector<value::Pair> pairs;
  for (unsigned i = 0; i != 1000; ++i) {
    std::vector<value::Pair> key;
    for (unsigned bit = 0; bit != 16; bit += 2) {
      key.emplace_back(value::resource(names[i >> bit & 1], 1),
                       value::resource(names[i >> (bit + 1) & 1], 1));
    }
    pairs.emplace_back(value::map(key), value::undef());
  }
  return seconds_to_print(trace, value::map(pairs));
}

const std::string long_text(300'000, 'n');

TEST(WorkOfKeys, EqualNamesAreToldEqualOnce) {
  EXPECT_LT(seconds_to_tell_apart(long_text, long_text), limit);
}

TEST(WorkOfKeys, NamesThatASimpleHashTakesForEqualCostNothing) {
  EXPECT_LT(
      seconds_to_tell_apart(long_text + "aaaaabadacaadgfaaa", long_text + "cfcabaaaaacaaaagec"),
      limit);
  std::string thue_morse[2];
  for (unsigned i = 0; i != 2048; ++i) {
    thue_morse[0] += std::popcount(i) % 2 == 0 ? 'a' : 'b';
    thue_morse[1] += std::popcount(i) % 2 == 0 ? 'b' : 'a';
  }
  EXPECT_LT(seconds_to_tell_apart(long_text + thue_morse[0], long_text + thue_morse[1]), limit);
}

// Their printed length is gigabytes.
TEST(WorkOfKeys, OverlappingNamesAreSortedBeforeTheyArePrinted) {
  TraceBuilder trace;
  const Ref text = trace.text(long_text + long_text);
  std::vector<value::Pair> pairs;
  for (unsigned i = 0; i != 10'000; ++i) {
    pairs.emplace_back(value::resource(text + i * 7919 % 10'000 * 60, 1), value::null());
  }
  EXPECT_LT(seconds_to_print(trace, value::map(pairs)), limit);
}

TEST(WorkOfKeys, OneLongNameLeavesOtherKeysAlone) {
  TraceBuilder trace;
  std::vector<value::Pair> pairs = {{value::resource(trace.text(long_text), 1), value::null()}};
  for (int i = 0; i != 2000; ++i) {
    pairs.emplace_back(value::string(std::string(3000, 'n') + std::to_string(i * 7919 % 2000)),
                       value::null());
  }
  EXPECT_LT(seconds_to_print(trace, value::map(pairs), std::size_t{1} << 30), limit);
}

TEST(WorkOfKeys, AnOutputThatFailedEndsAKey) {
  TraceBuilder trace;
  const Ref text = trace.text(long_text + long_text);
  std::vector<value::Pair> key;
  for (int i = 0; i != 20'000; ++i) {
    key.emplace_back(value::resource(text, 1), value::resource(text, 2));
  }
  EXPECT_LT(seconds_to_print(trace, value::map({{value::map(key), value::null()}})), limit);
}

TEST(WorkOfKeys, AnOutputThatFailedEndsAMap) {
  TraceBuilder trace;
  const Ref text = trace.text(long_text + long_text);
  std::vector<value::Pair> pairs;
  for (unsigned i = 0; i != 40'000; ++i)
    pairs.emplace_back(value::resource(text, i), value::null());
  EXPECT_LT(seconds_to_print(trace, value::map(pairs)), limit);
}

}  // namespace
}  // namespace CT::Checkpoint::Test
