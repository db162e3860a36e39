// SPDX-License-Identifier: MIT
//
// What holds for all measures, on random traces: times nest, and what is a node's own is the same
// whether it is kept or found from the children.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "ctmeasure/ct_measures.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

Trace opened(std::string_view bytes) {
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size())) << trace.error_message();
  return trace;
}

// A trace of calls whose times and ends are anything.
std::string wild_trace(std::mt19937& random) {
  std::string text = "F: function user \"f\"\nstartup";
  const auto time = [&] {
    return random() % 5 != 0
               ? " @" + std::to_string(random() % 40) + "+" + std::to_string(random() % 3) +
                     (random() % 3 != 0 ? " mem " + std::to_string(random() % 100) : "")
               : std::string();
  };
  text += time() + "\n";
  std::vector<std::string> open;
  const std::size_t count = random() % 40;
  for (std::size_t i = 0; i != count; ++i) {
    switch (random() % 4) {
      case 0: text += "exit" + time() + "\n"; break;
      case 1:
        if (!open.empty()) {
          const std::size_t place = random() % open.size();
          text += "return" + time() + " of " + open[place] + "\n";
          open.resize(place);
        }
        break;
      default:
        open.push_back("c" + std::to_string(i));
        text += open.back() + ": call" + time() + " fn F\n";
    }
  }
  if (random() % 2 != 0) text += "shutdown" + time() + "\n";
  return text;
}

void expect_nested(const Trace& trace, const Measures& measures) {
  std::int64_t own = 0;
  std::vector<std::int64_t> at(static_cast<std::size_t>(measures.node_count()));
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const Measure& node = measures[id];
    ASSERT_GE(node.total_ns, 0);
    ASSERT_GE(measures.own(id).ns, 0);
    own += measures.own(id).ns;
    at[static_cast<std::size_t>(id)] = node.start_ns;
    const NodeId above = trace.parent(id);
    if (above == Storage::no_node) continue;
    ASSERT_LE(measures[above].start_ns, node.start_ns);
    ASSERT_LE(node.end_ns(), measures[above].end_ns());
    if (!node.has(Measure::is_span)) continue;
    std::int64_t& sibling = at[static_cast<std::size_t>(above)];
    ASSERT_LE(sibling, node.start_ns);
    sibling = node.end_ns();
  }
  if (measures.node_count() != 0) {
    ASSERT_EQ(own, measures[0].total_ns);
  }
}

// Kept, and found from the children.
void expect_same_own(const Trace& trace, const Measures& measures) {
  const Measures without(trace, Measures::Own::left_out);
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const OwnMeasure found = own_of(trace, without, id);
    ASSERT_EQ(found.ns, measures.own(id).ns);
    ASSERT_EQ(found.memory, measures.own(id).memory);
  }
}

TEST(Measures, AlwaysNest) {
  std::mt19937 random(3);
  for (int run = 0; run != 2000; ++run) {
    const std::string text = wild_trace(random);
    const Trace trace = opened(build_traces(text).front().bytes);
    const Measures measures(trace);
    expect_nested(trace, measures);
    expect_same_own(trace, measures);
    if (testing::Test::HasFatalFailure()) FAIL() << text;
  }
}

}  // namespace
}  // namespace CT::Test
