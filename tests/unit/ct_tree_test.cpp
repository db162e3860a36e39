// SPDX-License-Identifier: MIT
//
// Folds, filters and the choice of lines on small traces, and what holds for all of them on random
// ones: figures add up, however little is shown.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "open_trace.h"
#include "tools/cttool/ct_call_line.h"
#include "tools/cttool/ct_fold.h"
#include "tools/cttool/ct_tree_choice.h"
#include "tools/cttool/ct_tree_walk.h"

namespace CT::Tool {
namespace {

bool takes_all(const Fold& /*fold*/, std::uint32_t /*depth*/) { return true; }

class Lines final : public TreeSink {
 public:
  bool line(const TreeLine& line) override {
    lines.push_back(line);
    return true;
  }
  std::vector<TreeLine> lines;
};

struct Tree {
  explicit Tree(const std::string& bytes, const NodeFilter& filter = {}, FoldBy by = FoldBy::runs,
                const std::string& under = {}) {
    EXPECT_TRUE(trace.open(CT::Test::as_bytes(bytes), bytes.size()));
    measures = Measures(trace);
    EXPECT_TRUE(find_visible(trace, measures, filter, visible));
    EXPECT_TRUE(scope.find(trace, measures, under));
    folder.emplace(trace, measures, visible, by);
  }

  TreeCut walk(const TakesFold& takes) { return walk_tree(*folder, scope, takes, sink); }
  TreeCut choose(std::size_t limit) {
    const auto chosen = choose_lines(trace, measures, *folder, scope, takes_all, limit);
    EXPECT_LE(chosen.size(), limit);
    EXPECT_TRUE(std::is_sorted(chosen.begin(), chosen.end()));
    return walk([&](const Fold& fold, std::uint32_t) {
      return std::binary_search(chosen.begin(), chosen.end(), fold.first);
    });
  }

  // A line each: indented, with how many there are, total and own time, and what was left out.
  std::string text() {
    NodeLines names(trace, measures);
    std::string text;
    for (const TreeLine& line : sink.lines) {
      text.append(line.depth, ' ');
      text += names.label(line.fold.first);
      if (line.fold.count != 1) text += "*" + std::to_string(line.fold.count);
      text += " " + std::to_string(line.sums.total_ns) + " " + std::to_string(line.sums.own_ns);
      if (line.cut.folds != 0) {
        text += " -" + std::to_string(line.cut.folds) + "/" + std::to_string(line.cut.nodes) + " " +
                std::to_string(line.cut.total_ns);
      }
      text += "\n";
    }
    return text;
  }

  Trace trace;
  Measures measures;
  NodeSet visible;
  Scope scope;
  std::optional<Folder> folder;
  Lines sink;
};

// The whole tree, which is the same in both byte orders.
std::string tree(std::string_view text, const NodeFilter& filter = {}, FoldBy by = FoldBy::runs,
                 const std::string& under = {}) {
  std::string first;
  for (const CT::Test::BuiltTrace& built : CT::Test::build_traces(text)) {
    Tree tree(built.bytes, filter, by, under);
    EXPECT_EQ(tree.walk(takes_all).folds, 0);
    if (first.empty()) first = tree.text();
    EXPECT_EQ(tree.text(), first);
  }
  return first;
}

std::string chosen(std::string_view text, std::size_t limit, const NodeFilter& filter = {}) {
  Tree tree(CT::Test::build_traces(text).front().bytes, filter);
  tree.choose(limit);
  return tree.text();
}

// f calls g, g and h; f calls h and g; f calls nothing; h; f.
constexpr std::string_view loop =
    "F: function user \"f\"\nG: function user \"g\"\nH: function internal \"h\"\n"
    "startup @10\n"
    "a: call @10+1 fn F\n"
    "b: call @10+2 fn G\nreturn @10+3 of b\n"
    "c: call @10+3 fn G\nreturn @10+5 of c\n"
    "d: call @10+6 fn H\nreturn @10+7 of d\n"
    "return @10+8 of a\n"
    "e: call @10+10 fn F\n"
    "i: call @10+10 fn H\nreturn @10+14 of i\n"
    "j: call @10+15 fn G\nreturn @10+16 of j\n"
    "return @10+16 of e\n"
    "k: call @10+20 fn F\nreturn @10+21 of k\n"
    "l: call @10+21 fn H\nreturn @10+22 of l\n"
    "m: call @10+22 fn F\nreturn @10+23 of m\n"
    "shutdown @10+30\n";

TEST(Folds, SiblingsInARowAreOneLineAndTheirChildrenAreMergedByName) {
  EXPECT_EQ(tree(loop),
            "request 30 14\n"
            " f*3 14 5\n"
            "  g*3 4 4\n"
            "  h*2 5 5\n"
            " h 1 1\n"
            " f 1 1\n");
}

TEST(Folds, AllSiblingsOrNoneMayBeFolded) {
  EXPECT_EQ(tree(loop, {}, FoldBy::all),
            "request 30 14\n"
            " f*4 15 6\n"
            "  g*3 4 4\n"
            "  h*2 5 5\n"
            " h 1 1\n");
  EXPECT_EQ(tree(loop, {}, FoldBy::none),
            "request 30 14\n"
            " f 7 3\n  g 1 1\n  g 2 2\n  h 1 1\n"
            " f 6 1\n  h 4 4\n  g 1 1\n"
            " f 1 1\n h 1 1\n f 1 1\n");
}

TEST(Folds, CallsUnderWhichTheUserLooksAreMergedByName) {
  EXPECT_EQ(tree(loop, {}, FoldBy::runs, "f"), "f*4 15 6\n g*3 4 4\n h*2 5 5\n");
  EXPECT_EQ(tree(loop, {}, FoldBy::runs, "5"), "f 6 1\n h 4 4\n g 1 1\n");
}

TEST(Folds, OtherNodesAreFoldedByKindAndIncludesByPath) {
  EXPECT_EQ(tree("W: function user \"write\"\nA: text \"a\"\nB: text \"b\"\n"
                 "startup @10\n"
                 "a: call @10+1 fn W\nreturn @10+2 of a\n"
                 "b: write @10+2 \"x\"\nwrite_end @10+4 of b\n"
                 "c: write @10+4 \"y\"\nwrite_end @10+5 of c\n"
                 "flush @10+5\nflush @10+6\n"
                 "d: include @10+6 A\ninclude_return @10+7 of d\n"
                 "e: include @10+7 A\ninclude_return @10+8 of e\n"
                 "f: include @10+8 B\ninclude_return @10+9 of f\n"
                 "shutdown @10+10\n"),
            "request 10 3\n write 1 1\n write*2 3 3\n flush*2 0 0\n include a*2 2 2\n"
            " include b 1 1\n");
}

TEST(Folds, FunctionsOfOneNameAreOneWhereverTheyAreDefined) {
  EXPECT_EQ(tree("F: function user \"{closure}\" flags 0 file \"/a.php\" line 3\n"
                 "G: function user \"{closure}\" flags 0 file \"/b.php\" line 3\n"
                 "startup @10\n"
                 "a: call @10+1 fn F\nreturn @10+2 of a\n"
                 "b: call @10+2 fn G\nreturn @10+4 of b\n"
                 "shutdown @10+5\n"),
            "request 5 2\n {closure}*2 3 3\n");
}

TEST(Filters, ChildrenOfHiddenCallsMoveUpAndAreFoldedThere) {
  EXPECT_EQ(tree(loop, {.hidden = {"f"}}), "request 30 14\n g*2 3 3\n h*2 5 5\n g 1 1\n h 1 1\n");
  EXPECT_EQ(tree(loop, {.no_builtin = true}), "request 30 14\n f*4 15 6\n  g*3 4 4\n");
  EXPECT_EQ(tree(loop, {.hidden = {"f", "g", "h"}}), "request 30 14\n");
}

TEST(Filters, OnlyMatchingCallsAndWhatIsAroundThemAreLeft) {
  EXPECT_EQ(tree(loop, {.only = {"h"}}), "request 30 14\n f*2 13 4\n  h*2 5 5\n h 1 1\n");
  EXPECT_EQ(tree(loop, {.only = {"nothing"}}), "");
  EXPECT_EQ(tree(loop, {.hidden = {"f"}, .only = {"h"}}), "request 30 14\n h*3 6 6\n");
  EXPECT_EQ(tree(loop, {.only = {"h"}}, FoldBy::runs, "f"), "f*2 13 4\n h*2 5 5\n");
}

TEST(Filters, APatternThatIsNoneIsNoFilter) {
  Tree tree(CT::Test::build_traces(loop).front().bytes);
  EXPECT_FALSE(find_visible(tree.trace, tree.measures, {.hidden = {"/(/"}}, tree.visible));
  EXPECT_FALSE(find_visible(tree.trace, tree.measures, {.only = {"/(/"}}, tree.visible));
}

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
  EXPECT_THAT(chosen(text, 16), testing::HasSubstr("\n g 0 0\n  error 0 0\n h 0 0\n f 50 50\n"));
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
      text += (random() % 6 == 0 ? "exception" : "return") + time + " of " + open[place] + "\n";
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

TEST(NodeSets, CountAsTheyHave) {
  std::mt19937 random(5);
  NodeSet set(300, false);
  for (int i = 0; i != 120; ++i) set.add(static_cast<NodeId>(random() % 300));
  set.remove(64);
  set.number();
  EXPECT_FALSE(set.has(64));
  for (int i = 0; i != 3000; ++i) {
    const auto first = static_cast<NodeId>(random() % 300);
    const auto last = first + static_cast<NodeId>(random() % 300) % (300 - first);
    std::int32_t count = 0;
    for (NodeId id = first; id <= last; ++id) count += set.has(id) ? 1 : 0;
    ASSERT_EQ(set.count(first, last), count) << first << " " << last;
  }
  NodeSet all(130, true);
  all.number();
  EXPECT_EQ(all.count(0, 129), 130);
  EXPECT_EQ(all.count(63, 64), 2);
}

}  // namespace
}  // namespace CT::Tool
