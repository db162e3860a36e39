// SPDX-License-Identifier: MIT
//
// The data of reports of small traces in both byte orders: columns, order of values, what gives way
// where there is no room.
#include "ctreport/ct_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ctmeasure/ct_node_words.h"
#include "ctreport/ct_columns.h"
#include "open_trace.h"
#include "report_blocks.h"
#include "value_lines.h"

namespace CT::Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::string_view page = "<p>\n<!-- data -->\n</p>\n";
constexpr std::uint64_t much = 1 << 20;

struct Made {
  bool fits = false;
  std::int64_t left_out = 0;
  std::int64_t longest_ns = 0;
  std::uint64_t size = 0;
  std::string text;

  [[nodiscard]] std::string block(std::string_view name) const { return block_of(text, name); }
  // The lines of JSON that a block of values stands for.
  [[nodiscard]] std::vector<std::string> lines(std::string_view name) const {
    return value_lines(block(name), block("classes"));
  }
  [[nodiscard]] std::vector<std::uint64_t> numbers(std::string_view name) const {
    return varints(block(name));
  }
  [[nodiscard]] std::vector<std::uint64_t> summed(std::string_view name) const {
    return sums(block(name));
  }
};

Made report_of(const std::string& bytes, std::uint64_t max_size) {
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size())) << trace.error_message();
  const Measures measures(trace);
  const NodeSet all(trace.node_count(), true);
  Report::Report report(page, max_size);
  report.add_document("summary", [](Writer& out) { out.put("{\"a\":1}"); });
  Made made;
  made.fits = report.add_nodes({trace, measures, all, "t.ct"});
  MemoryWriter out;
  report.write(out);
  made.text = out.view();
  made.size = report.size();
  made.left_out = report.left_out();
  made.longest_ns = report.longest_left_out_ns();
  EXPECT_EQ(made.size, made.text.size());
  return made;
}

// The same of a trace in words, in both byte orders.
Made report(std::string_view text, std::uint64_t max_size = much) {
  Made first;
  for (const BuiltTrace& built : build_traces(text)) {
    const Made made = report_of(built.bytes, max_size);
    if (built.order == ByteOrder::little) first = made;
    EXPECT_EQ(made.text, first.text);
  }
  return first;
}

constexpr std::string_view request =
    "A: class user \"C\"\n"
    "F: function user \"f\" class A file \"/a.php\" line 7\nG: function internal \"g\"\n"
    "startup @10 mem 100 url \"http://h/\" uri \"/u\" method \"GET\"\n"
    "a: call @10+2 mem 150 at \"/i.php\":3 fn F args [1]\n"
    "b: call @10+3 mem 140 at \"/a.php\":8 fn G args []\n"
    "return @10+5 mem 170 of b value \"r\"\n"
    "error @10+6 2 \"m\"\n"
    "c: call @10+7 at \"/a.php\":5 fn F args []\n"
    "exception @10+8 of c value 5\n"
    "shutdown @10+90 mem 90\n";

TEST(Report, HasAColumnForEachThing) {
  const Made made = report(request);
  EXPECT_TRUE(made.fits);
  EXPECT_THAT(made.numbers("nodes-id"), ElementsAre(1, 1, 1, 1, 1));
  EXPECT_EQ(made.block("nodes-kind"), std::string("\0\1\1\x8\1", 5));
  // The request; `a` never ended, so it has the end of the request; `b`; the error; `c` threw and
  // has no memory.
  EXPECT_EQ(made.block("nodes-flags"), "\x0d\x8f\x8d\x80\x82");
  EXPECT_THAT(made.summed("nodes-depth"), ElementsAre(0, 1, 2, 2, 2));
  EXPECT_THAT(made.numbers("nodes-name"), ElementsAre(1, 1, 2, 2, 1));
  EXPECT_THAT(made.summed("nodes-start"), ElementsAre(0, 2, 3, 6, 7));
  EXPECT_THAT(made.numbers("nodes-total"), ElementsAre(90, 88, 2, 0, 1));
  EXPECT_THAT(made.summed("nodes-memory"), ElementsAre(100, 150, 140));
  EXPECT_THAT(signed_numbers(made.block("nodes-growth")), ElementsAre(-10, -60, 30));
  EXPECT_THAT(made.numbers("nodes-file"), ElementsAre(0, 1, 2, 0, 2));
  EXPECT_THAT(made.summed("nodes-line"), ElementsAre(3, 8, 5));
}

TEST(Report, HasEachTextOnce) {
  const Made made = report(request);
  EXPECT_EQ(made.block("labels"), R"(["GET /u","E_WARNING: m"])");
  EXPECT_EQ(made.block("files"), R"(["/i.php","/a.php"])");
  EXPECT_EQ(made.block("functions"),
            R"({"name":["C::f","g"],"file":[1,-1],"line":[7,0],"builtin":[0,1],"calls":[2,1],)"
            R"("total_ns":[88,2],"own_ns":[86,2],"own_memory":[-90,30]})");
  EXPECT_EQ(made.block("summary"), R"({"a":1})");
  EXPECT_THAT(made.text, testing::StartsWith(R"(<p>
<script type="application/octet-stream" id="meta">)"));
  EXPECT_THAT(made.text, testing::EndsWith("</script>\n</p>\n"));
}

TEST(Report, HasTheDearestValuesFirst) {
  const Made made = report(request);
  EXPECT_THAT(made.lines("values-0"),
              ElementsAre(R"({"number":2,"level":"E_WARNING","message":"m"})", R"({"args":[1]})",
                          R"({"args":[],"returned":"r"})", R"({"args":[],"thrown":5})"));
  EXPECT_THAT(made.block("meta"),
              HasSubstr(R"("blocks":[4],"left_out":{"nodes":0,"longest_ns":0,)"));
  EXPECT_THAT(made.block("meta"), HasSubstr(R"("title":"GET /u")"));
}

// A call that lasts from one nanosecond to another.
void put_call(const std::string& label, std::uint64_t begin, std::uint64_t end,
              const std::string& argument, std::string& text) {
  text.append("c").append(label).append(": call @10+").append(std::to_string(begin));
  text.append(" fn F args [").append(argument).append("]\nreturn @10+");
  text.append(std::to_string(end)).append(" of c").append(label).append("\n");
}

TEST(Report, ValuesOfOneClassKeepTheirOrder) {
  std::string text = "F: function user \"f\"\nstartup @10\n";
  const std::vector<std::uint64_t> totals = {1, 3, 2, 0, 2, 1, 3};
  std::uint64_t time = 0;
  for (std::size_t i = 0; i != totals.size(); ++i) {
    const std::string argument = std::to_string(i);
    put_call(argument, time, time + totals[i], argument, text);
    time += 10;
  }
  std::string order;
  for (const std::string& line : report(text).lines("values-0")) order += line[line.find('[') + 1];
  EXPECT_EQ(order, "1246053");
}

TEST(Report, OfNothingHasEmptyColumns) {
  const Made made = report("");
  EXPECT_TRUE(made.fits);
  for (const char* name :
       {"nodes-id", "nodes-kind", "nodes-flags", "nodes-depth", "nodes-name", "nodes-start",
        "nodes-total", "nodes-memory", "nodes-growth", "nodes-file", "nodes-line"}) {
    EXPECT_THAT(made.block(name), IsEmpty()) << name;
  }
  EXPECT_EQ(made.block("labels"), "[]");
  EXPECT_THAT(made.block("meta"), HasSubstr(R"("started_ns":"","nodes":0,)"));
  EXPECT_THAT(made.block("meta"), HasSubstr(R"("blocks":[])"));
}

TEST(Report, TimesThatAreMissingAreMarked) {
  const Made made = report("F: function user \"f\"\nstartup @10\na: call fn F\nreturn of a\n");
  EXPECT_EQ(made.block("nodes-flags"), "\x03\xb1");
  EXPECT_THAT(made.numbers("nodes-total"), ElementsAre(0, 0));
  EXPECT_THAT(made.block("meta"), HasSubstr(R"("untimed":1)"));
}

TEST(Report, DamageIsCounted) {
  const Made made = report("startup @10\nraw 20\nevent 0x1 sequence 4\nshutdown @10+1\n");
  EXPECT_THAT(made.block("meta"), testing::Not(HasSubstr(R"("damaged":0)")));
  EXPECT_EQ(made.block("nodes-kind"), std::string("\0\x9", 2));
}

// A request of calls, each twice as long as the one before, with arguments that cannot be packed.
std::string growing_calls(int calls) {
  std::string text = "F: function user \"f\"\nstartup @10\n";
  unsigned noise = 1;
  std::uint64_t time = 0;
  for (int i = 0; i != calls; ++i) {
    std::string argument = "\"";
    for (int c = 0; c != 30'000; ++c) {
      noise = noise * 1664525 + 1013904223;
      argument += static_cast<char>('A' + (noise >> 24) % 26);
    }
    const std::uint64_t end = time + (std::uint64_t{1} << i);
    put_call(std::to_string(i), time, end, argument.append("\""), text);
    time = end;
  }
  return text + "shutdown @11\n";
}

TEST(Report, TheCheapestGiveWay) {
  const std::string text = growing_calls(16);
  const Made whole = report(text);
  EXPECT_THAT(whole.block("meta"), HasSubstr(R"("blocks":[4,4,4,4])"));
  const Made part = report(text, whole.size * 2 / 3);
  EXPECT_TRUE(part.fits);
  EXPECT_LE(part.size, whole.size * 2 / 3);
  EXPECT_EQ(part.left_out, 8);
  EXPECT_EQ(part.longest_ns, 128);
  EXPECT_THAT(part.block("meta"),
              HasSubstr(R"("blocks":[4,4,-8],"left_out":{"nodes":8,"longest_ns":128,)"));
  EXPECT_EQ(part.block("values-1"), whole.block("values-1"));
  EXPECT_EQ(part.block("nodes-total"), whole.block("nodes-total"));
}

TEST(Report, WithoutRoomForValuesHasNone) {
  const std::string text = growing_calls(3);
  const Made whole = report(text);
  const Made none = report(text, whole.size - 40'000);
  EXPECT_TRUE(none.fits);
  EXPECT_EQ(none.left_out, 3);
  EXPECT_THAT(none.text, testing::Not(HasSubstr("values-")));
  EXPECT_FALSE(report(text, 100).fits);
}

TEST(Report, AVeryLongValueGivesWayAlone) {
  std::string text = "startup @10\nwrite \"";
  unsigned noise = 1;
  for (int c = 0; c != 300'000; ++c) {
    noise = noise * 1664525 + 1013904223;
    text += static_cast<char>('A' + (noise >> 24) % 26);
  }
  text += "\"\nerror @10+6 2 \"m\"\n";
  const Made part = report(text, 100'000);
  EXPECT_TRUE(part.fits);
  EXPECT_EQ(part.left_out, 1);
  EXPECT_THAT(part.block("meta"), HasSubstr(R"("blocks":[-1,1])"));
  EXPECT_THAT(part.block("values-1"), HasSubstr("E_WARNING"));
}

TEST(Report, KindsAreNumberedAsTheyAreCalled) {
  const std::vector<std::string_view> kinds = {"request", "call",   "include",      "write",
                                               "flush",   "header", "send_headers", "exit",
                                               "error",   "event"};
  for (std::size_t type = 0; type != Node::node_infos.size(); ++type) {
    const auto node = static_cast<Node::Type>(type);
    if (kind_of(node) == "none") continue;
    EXPECT_EQ(kinds.at(Report::kind_number(node)), kind_of(node));
  }
}

TEST(Report, TheBuiltPageHasAPlaceForData) {
  const std::string_view built = Report::built_page();
  EXPECT_THAT(built, HasSubstr("\n<!-- data -->\n"));
  EXPECT_EQ(built.find("<!-- data -->"), built.rfind("<!-- data -->"));
}

}  // namespace
}  // namespace CT::Test
