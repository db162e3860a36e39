// SPDX-License-Identifier: MIT
//
// Parts of exports that small traces do not reach: tables that are full, cycles of many functions,
// the shape of random trees.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "ctexport/ct_call_cycles.h"
#include "ctexport/ct_call_graph.h"
#include "ctexport/ct_export_formats.h"
#include "ctexport/ct_stack_table.h"
#include "ctsql/ct_shape_walk.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

using namespace Export;  // NOLINT(google-build-using-namespace): that is what is tested

// A request that calls functions at random, some of which never end.
std::string random_trace(int calls, unsigned seed, int functions) {
  std::mt19937 random(seed);
  TraceBuilder trace;
  std::vector<Ref> all;
  for (int i = 0; i != functions; ++i) all.push_back(trace.function({.name = std::to_string(i)}));
  trace.add(CheckpointDraft::startup().time(10));
  std::vector<Ref> open;
  std::uint32_t time = 0;
  for (int i = 0; i != calls; ++i) {
    while (!open.empty() && random() % 2 == 0) {
      if (random() % 8 != 0) {
        trace.add(CheckpointDraft::function_return(open.back()).time(10, ++time));
      }
      open.pop_back();
    }
    const Ref function = all[random() % all.size()];
    open.push_back(trace.add(CheckpointDraft::function_call(function).time(10, ++time)));
    if (random() % 5 == 0) trace.add(CheckpointDraft::sapi_flush().time(10, ++time));
  }
  trace.add(CheckpointDraft::shutdown().time(10, ++time));
  return trace.build();
}

TEST(ShapeWalk, IsTheShapeOfTheTree) {
  for (unsigned seed = 0; seed != 40; ++seed) {
    const std::string bytes = random_trace(400, seed, 5);
    Trace trace;
    ASSERT_TRUE(trace.open(as_bytes(bytes), bytes.size()));
    Sql::ShapeWalk shape(trace);
    for (NodeId id = 0; id != trace.node_count(); ++id) {
      shape.next();
      ASSERT_EQ(shape.depth(), trace.depth(id)) << seed << " " << id;
      ASSERT_EQ(shape.last(), trace.last(id)) << seed << " " << id;
    }
  }
}

TEST(StackTable, KnowsEachStackOnce) {
  StackTable table;
  const auto a = table.push(StackTable::bottom, 1);
  const auto b = table.push(a, 2);
  EXPECT_EQ(table.push(StackTable::bottom, 1), a);
  EXPECT_EQ(table.push(a, 2), b);
  EXPECT_NE(table.push(b, 2), b);
  table.add(b, 5);
  table.add(b, 6);
  EXPECT_EQ(table[b].weight, 11);
  for (std::int32_t frame = 0; !table.is_full(); ++frame) table.push(b, frame);
  EXPECT_EQ(table.push(a, 2), b);
  table.clear();
  EXPECT_EQ(table.size(), 1U);
}

// More stacks than the table has room for: lines come again, and their sum is the whole.
TEST(StackTable, LosesNothingWhenItIsFull) {
  const std::string bytes = random_trace(60'000, 7, 400);
  Trace trace;
  ASSERT_TRUE(trace.open(as_bytes(bytes), bytes.size()));
  const Measures measures(trace);
  const NodeSet all(trace.node_count(), true);
  for (const char* format : {"folded", "callgrind"}) {
    MemoryWriter out;
    find_format(format)->write({trace, measures, all, "t"}, {}, out);
    std::string_view text = out.view();
    std::int64_t sum = 0;
    std::size_t lines = 0;
    bool is_call = false;
    for (; !text.empty(); text.remove_prefix(text.find('\n') + 1), ++lines) {
      const std::string line(text.substr(0, text.find('\n')));
      const bool is_folded = format == std::string("folded");
      const bool is_own = !line.empty() && line[0] >= '0' && line[0] <= '9' && !is_call;
      if (is_folded || is_own) {
        sum += std::stoll(line.substr(is_folded ? line.rfind(' ') : line.find(' ')));
      }
      is_call = line.starts_with("calls=");
    }
    EXPECT_EQ(sum, measures[0].total_ns) << format;
    EXPECT_GT(lines, StackTable::most) << format;
  }
}

TEST(CallCycles, AreFoundWhereFunctionsLeadBack) {
  CallCycles cycles;
  // 0 > 1 > 2 > 3 > 1, 3 > 4 > 5 > 4, 0 > 6 > 5.
  for (const auto& [caller, callee] : std::vector<std::pair<unsigned, unsigned>>{
           {0, 1}, {1, 2}, {2, 3}, {3, 1}, {3, 4}, {4, 5}, {5, 4}, {0, 6}, {6, 5}, {0, 1}}) {
    cycles.add(caller, callee);
  }
  cycles.find();
  for (unsigned a = 0; a != 7; ++a) {
    for (unsigned b = 0; b != 7; ++b) {
      const auto cycle = [](unsigned f) {
        return f >= 1 && f <= 3 ? 1 : f == 4 || f == 5 ? 4 : f + 10;
      };
      EXPECT_EQ(cycles.are_together(a, b), cycle(a) == cycle(b)) << a << " " << b;
    }
  }
  EXPECT_FALSE(cycles.leads_back(1, 2));
  EXPECT_FALSE(cycles.leads_back(2, 3));
  EXPECT_TRUE(cycles.leads_back(3, 1));
  EXPECT_FALSE(cycles.are_together(7, 7));
}

TEST(CallCycles, OfALongWayDoNotRecurse) {
  CallCycles cycles;
  constexpr unsigned count = 100'000;
  for (unsigned i = 0; i != count; ++i) cycles.add(i, i + 1);
  cycles.add(count, 0);
  cycles.find();
  EXPECT_TRUE(cycles.are_together(0, count));
  EXPECT_TRUE(cycles.leads_back(count, 0));
  EXPECT_FALSE(cycles.leads_back(0, 1));
}

TEST(CallCycles, GiveUpWhereThereAreTooManyCalls) {
  CallCycles cycles;
  for (unsigned i = 0; i <= CallCycles::most_calls; ++i) cycles.add(0, i);
  EXPECT_TRUE(cycles.has_given_up());
  cycles.find();
  EXPECT_FALSE(cycles.are_together(0, 0));
}

}  // namespace
}  // namespace CT::Test
