// SPDX-License-Identifier: MIT
//
// How own time is parted by areas.
#include "ctmeasure/ct_areas.h"

#include <gtest/gtest.h>

#include <string>

#include "open_trace.h"

namespace CT::Test {
namespace {

std::string lines_of(const std::vector<Area>& areas) {
  std::string lines;
  for (const Area& area : areas) {
    lines +=
        area.name + " " + std::to_string(area.own_ns) + " " + std::to_string(area.calls) + "\n";
  }
  return lines;
}

TEST(Areas, AreSplitWhereMostTimeIs) {
  const std::vector<PathTime> paths = {{"/srv/app/a", 5, 1},   {"/srv/app/a/x", 20, 2},
                                       {"/srv/app/a/y", 7, 1}, {"/srv/app/b", 3, 1},
                                       {"/srv/app/b/z", 2, 1}, {"/srv/app-old", 1, 1}};
  EXPECT_EQ(lines_of(split_paths(paths, '/', 1)), "/srv/... 38 7\n");
  EXPECT_EQ(lines_of(split_paths(paths, '/', 2)), "/srv/app/... 37 6\n/srv/app-old 1 1\n");
  EXPECT_EQ(lines_of(split_paths(paths, '/', 3)),
            "/srv/app/a/... 32 4\n/srv/app/b/... 5 2\n/srv/app-old 1 1\n");
  EXPECT_EQ(lines_of(split_paths(paths, '/', 9)),
            "/srv/app/a/x 20 2\n/srv/app/a/y 7 1\n/srv/app/a 5 1\n/srv/app/b 3 1\n"
            "/srv/app/b/z 2 1\n/srv/app-old 1 1\n");
  EXPECT_EQ(lines_of(split_paths({}, '/', 3)), "");
}

TEST(Areas, OfTooManyPartsAreTheLargestAndTheOthers) {
  std::vector<PathTime> paths;
  for (int i = 1; i != 9; ++i) paths.push_back({"App\\N" + std::to_string(i), i, 1});
  EXPECT_EQ(lines_of(split_paths(paths, '\\', 4)),
            "App\\... (others) 15 5\nApp\\N8 8 1\nApp\\N7 7 1\nApp\\N6 6 1\n");
}

TEST(Areas, AddUpToTheRequest) {
  const std::string bytes =
      build_traces(
          "C: class user \"A\\\\B\"\nf: function user \"f\" class C flags 0 file \"/a/f.php\"\n"
          "g: function user \"g\" flags 0 file \"/b/g.php\"\nb: function internal \"strlen\"\n"
          "startup @10\ni: include @10+1 \"/a/index.php\"\n"
          "c: call @10+3 fn f\nreturn @10+7 of c\nd: call @10+7 fn g\n"
          "e: call @10+8 fn b\nreturn @10+9 of e\nreturn @10+12 of d\n"
          "w: write @10+12 \"x\"\nwrite_end @10+18 of w\n"
          "include_return @10+20 of i\nshutdown @10+30\n")
          .front()
          .bytes;
  Trace trace;
  ASSERT_TRUE(trace.open(as_bytes(bytes), bytes.size()));
  const Areas found = areas(trace, Measures(trace), 5);
  EXPECT_EQ(found.by, Areas::By::folder);
  EXPECT_EQ(lines_of(found.user), "/a 4 1\n/b 4 1\n");
  EXPECT_EQ(found.builtin.own_ns, 1);
  EXPECT_EQ(found.builtin.calls, 1);
  EXPECT_EQ(found.includes.own_ns, 4);
  EXPECT_EQ(found.writes.own_ns, 6);
  EXPECT_EQ(found.request.own_ns, 11);
}

}  // namespace
}  // namespace CT::Test
