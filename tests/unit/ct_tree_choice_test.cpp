// SPDX-License-Identifier: MIT
//
// The choice of lines on small traces, and what holds for all of them on random ones: figures add
// up, however little is shown.
#include "tools/cttool/ct_tree_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>

#include "fold_tree.h"

namespace CT::Tool {
namespace {

TEST(Choice, TakesTheGreatestAndSaysWhatIsLeftOut) {
  EXPECT_EQ(chosen(loop, 1), "request 30 14 -3/10 16\n");
  EXPECT_EQ(chosen(loop, 2), "request 30 14 -2/2 2\n f*3 14 5 -2/5 9\n");
  EXPECT_EQ(chosen(loop, 3), "request 30 14 -2/2 2\n f*3 14 5 -1/3 4\n  h*2 5 5\n");
  // Of two that are alike the first.
  EXPECT_EQ(chosen(loop, 5), "request 30 14 -1/1 1\n f*3 14 5\n  g*3 4 4\n  h*2 5 5\n h 1 1\n");
  EXPECT_EQ(chosen(loop, 100), tree(loop));
}

TEST(Choice, TellsWhatIsLeftOutOfTheOutermost) {
  Tree tree(CT::Test::build_traces(loop).front().bytes, {.hidden = {}}, FoldBy::runs, "/^[gh]$/");
  const TreeCut cut = tree.choose(1);
  EXPECT_EQ(tree.text(), "h*3 6 6\n");
  EXPECT_EQ(cut.folds, 1);
  EXPECT_EQ(cut.nodes, 3);
  EXPECT_EQ(cut.total_ns, 4);
}

TEST(Choice, HasRoomForErrorsExceptionsAndOpenCallsThatTookNoTime) {
  std::string text =
      "F: function user \"f\"\nG: function user \"g\"\nH: function user \"h\"\nstartup @10\n";
  const auto slow = [&](int i) {
    const std::string at = std::to_string(i * 100);
    text += "f" + at + ": call @10+" + at + " fn F\nreturn @10+" + std::to_string(i * 100 + 50) +
            " of f" + at + "\nflush\n";
  };
  for (int i = 1; i != 20; ++i) slow(i);
  text += "g: call @10+2000 fn G\nerror @10+2000 2 \"m\"\nreturn @10+2000 of g\nflush\n";
  text += "h: call @10+2001 fn H\nexception @10+2001 of h value null\nflush\n";
  for (int i = 21; i != 40; ++i) slow(i);
  text += "shutdown @10+5000\n";
  EXPECT_THAT(chosen(text, 16), testing::HasSubstr("\n g 0 0\n  error 0 0\n h 0 0\n"));
  // Three lines of twelve, of which the request is one: the exception comes before the error, which
  // would need two.
  const std::string few = chosen(text, 12);
  EXPECT_THAT(few, testing::HasSubstr("\n h 0 0\n"));
  EXPECT_THAT(few, testing::Not(testing::HasSubstr("error")));
  EXPECT_EQ(std::count(few.begin(), few.end(), '\n'), 12);
}

TEST(Choice, ShowsWhereARequestHung) {
  std::string text = "F: function user \"f\"\nG: function user \"g\"\nstartup @10\n";
  for (int i = 1; i != 50; ++i) {
    const std::string at = std::to_string(i);
    text += "f" + at + ": call @10+" + at + " fn F\nreturn @10+" + std::to_string(i + 1) + " of f" +
            at + "\nflush\n";
  }
  text += "call @10+60 fn G\ncall @10+60 fn G\n";
  EXPECT_THAT(chosen(text, 12), testing::HasSubstr("\n g 0 0\n  g 0 0\n"));
}

TEST(Choice, OpensAHundredThousandLevels) {
  constexpr int depth = 100'000;
  std::string text = "order little\nF: function user \"f\"\nG: function user \"g\"\nstartup @10\n";
  for (int i = 1; i <= depth; ++i) {
    text += "call @10+" + std::to_string(i);
    text += i % 2 == 0 ? " fn F\n" : " fn G\n";
  }
  text += "shutdown @10+200000\n";
  Tree all(CT::Test::build_traces(text).front().bytes);
  all.walk(takes_all);
  ASSERT_EQ(all.sink.lines.size(), std::size_t{depth} + 1);
  EXPECT_EQ(all.sink.lines.back().depth, std::uint32_t{depth});
  Tree few(CT::Test::build_traces(text).front().bytes);
  few.choose(200);
  ASSERT_EQ(few.sink.lines.size(), 200U);
  EXPECT_EQ(few.sink.lines.back().cut.nodes, depth - 199);
}

// What a line says is what the lines under it and what was left out there come to.
void expect_sums(const Tree& tree, const TreeCut& outermost) {
  std::map<NodeId, FoldSums> under;
  std::int64_t nodes = outermost.nodes;
  for (const TreeLine& line : tree.sink.lines) {
    FoldSums& sums = under[line.parent];
    sums.nodes += line.sums.nodes;
    sums.total_ns += line.sums.total_ns;
    nodes += line.fold.count + line.cut.nodes;
  }
  for (const TreeLine& line : tree.sink.lines) {
    const FoldSums sums = under[line.fold.first];
    EXPECT_EQ(line.sums.nodes, line.fold.count + sums.nodes + line.cut.nodes);
    EXPECT_EQ(line.has_lines_under, sums.nodes != 0);
    // Hidden nodes took what is left.
    EXPECT_GE(line.sums.total_ns, line.sums.own_ns + sums.total_ns + line.cut.total_ns);
  }
  EXPECT_EQ(nodes, tree.visible.count(0, tree.trace.node_count() - 1));
}

std::string random_trace(std::mt19937& random) {
  std::string text =
      "A: function user \"a\"\nB: function user \"b\"\nC: function internal \"c\"\nstartup @0\n";
  std::vector<std::string> open;
  const std::size_t count = random() % 80;
  for (std::size_t i = 0; i != count; ++i) {
    const std::string time = " @0+" + std::to_string(i * 3 + random() % 5);
    if (random() % 5 < 2 && !open.empty()) {
      const std::size_t place = open.size() - 1 - (random() % 8 == 0 ? random() % open.size() : 0);
      text += (random() % 6 == 0 ? "exception" : "return") + time + " of " + open[place] +
              " value null\n";
      open.resize(place);
    } else if (random() % 9 == 0) {
      text += "error" + time + " 2 \"m\"\n";
    } else {
      open.push_back("n" + std::to_string(i));
      text += open.back() + ": call" + time + " fn " + std::string(1, "ABC"[random() % 3]) + "\n";
    }
  }
  return text + "shutdown @0+500\n";
}

TEST(Choice, FiguresAddUpWhateverIsShown) {
  std::mt19937 random(11);
  for (int run = 0; run != 1500; ++run) {
    const std::string text = random_trace(random);
    const std::string bytes = CT::Test::build_traces(text).front().bytes;
    NodeFilter filter;
    if (random() % 3 == 0) filter.hidden.emplace_back("a");
    if (random() % 3 == 0) filter.only.emplace_back("b");
    filter.no_builtin = random() % 4 == 0;
    Tree tree(bytes, filter, static_cast<FoldBy>(random() % 3));
    const TreeCut cut = random() % 3 == 0 ? tree.walk(takes_all) : tree.choose(1 + random() % 20);
    expect_sums(tree, cut);
    if (testing::Test::HasFailure()) FAIL() << text;
  }
}

}  // namespace
}  // namespace CT::Tool
