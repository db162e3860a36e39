// SPDX-License-Identifier: MIT
//
// Folds and filters on small traces.
#include "tools/cttool/ct_fold.h"

#include <gtest/gtest.h>

#include <random>

#include "fold_tree.h"

namespace CT::Tool {
namespace {

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
