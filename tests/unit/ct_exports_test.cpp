// SPDX-License-Identifier: MIT
//
// Exports of small traces, byte for byte where a format is short: what never ended, recursion and
// cycles, names that no format was made for, traces of nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "ctexport/ct_export_formats.h"
#include "open_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

using namespace Export;  // NOLINT(google-build-using-namespace): that is what is tested

using testing::HasSubstr;
using testing::Not;

// What a format makes of a trace in a file.
std::string exported_file(const std::string& bytes, const char* format, const Options& how = {}) {
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size())) << trace.error_message();
  const Measures measures(trace);
  const NodeSet all(trace.node_count(), true);
  MemoryWriter out;
  find_format(format)->write({trace, measures, all, "t.ct"}, how, out);
  return std::string(out.view());
}

// The same of a trace in words, in both byte orders.
std::string exported(std::string_view text, const char* format, const Options& how = {}) {
  std::string first;
  for (const BuiltTrace& built : build_traces(text)) {
    const std::string said = exported_file(built.bytes, format, how);
    if (built.order == ByteOrder::little) first = said;
    EXPECT_EQ(said, first);
  }
  return first;
}

std::string from(const std::string& text, std::string_view begin) {
  const std::size_t at = text.find(begin);
  if (at != std::string::npos) return text.substr(at);
  std::string missing = "not there: ";
  return missing.append(begin);
}

constexpr std::string_view unfinished =
    "F: function user \"f\" file \"/a.php\" line 7\nG: function user \"g\"\n"
    "startup @10 mem 100\n"
    "a: call @10+2 mem 150 fn F\n"
    "b: call @10+3 mem 160 fn G\n"
    "return @10+5 mem 150 of b\n"
    "error @10+6 2 \"m\"\n";

TEST(Exports, SpansThatNeverEndedSaySo) {
  EXPECT_EQ(exported(unfinished, "folded"),
            "request (never ended) 2\n"
            "request (never ended);f (never ended) 2\n"
            "request (never ended);f (never ended);g 2\n");
  const std::string speedscope = exported(unfinished, "speedscope");
  EXPECT_THAT(speedscope, HasSubstr("{\"type\":\"O\",\"frame\":1,\"at\":2},\n"
                                    "{\"type\":\"O\",\"frame\":2,\"at\":3},\n"
                                    "{\"type\":\"C\",\"frame\":2,\"at\":5},\n"
                                    "{\"type\":\"C\",\"frame\":1,\"at\":6},\n"
                                    "{\"type\":\"C\",\"frame\":0,\"at\":6}\n"));
  EXPECT_THAT(speedscope,
              HasSubstr("{\"name\":\"f (never ended)\",\"file\":\"/a.php\",\"line\":7}"));
  EXPECT_THAT(speedscope, HasSubstr("\"started_ns\":\"10000000000\""));
  EXPECT_THAT(exported(unfinished, "chrome"),
              HasSubstr("\"ts\":0.002,\"name\":\"f\",\"cat\":\"call\",\"args\":{\"id\":1,"
                        "\"open\":true"));
  EXPECT_THAT(exported(unfinished, "jsonl"), HasSubstr("\"outcome\":\"open\",\"marks\":[]"));
  EXPECT_THAT(exported(unfinished, "callgrind"), HasSubstr("desc: Never ended: 2\n"));
  EXPECT_THAT(exported(unfinished, "callgrind"), HasSubstr("desc: Damaged places: 0\n"));
}

constexpr std::string_view recursion =
    "F: function user \"f\" file \"/a.php\" line 7\n"
    "G: function user \"g\" file \"/a.php\" line 9\n"
    "startup @10 mem 100\n"
    "a: call @10+1 mem 100 fn F\n"
    "b: call @10+2 mem 110 at \"/a.php\":8 fn G\n"
    "c: call @10+3 mem 120 at \"/a.php\":10 fn F\n"
    "return @10+5 mem 130 of c\n"
    "return @10+7 mem 150 of b\n"
    "return @10+10 mem 90 of a\n"
    "d: call @10+20 mem 90 fn G\n"
    "e: call @10+21 mem 90 at \"/other.php\":3 fn F\n"
    "return @10+22 mem 91 of e\n"
    "return @10+23 mem 91 of d\n"
    "shutdown @10+30 mem 91\n";

// The outermost calls of f are "f" and, back around the cycle of f and g, "f'1.2": 9 and 1.
TEST(Exports, CallgrindHasNoCycles) {
  EXPECT_EQ(from(exported(recursion, "callgrind"), "summary:"),
            "summary: 30 41 5\n"
            "\nfl=(1) php:internal\nfn=(1) request\n0 18 0 0\n"
            "cfi=(2) /a.php\ncfn=(2) f\ncalls=1 7\n0 9 40 3\n"
            "cfi=(2)\ncfn=(3) g\ncalls=1 9\n0 3 1 2\n"
            "\nfl=(2)\nfn=(2)\n7 4 0 1\n"
            "cfi=(2)\ncfn=(3)\ncalls=1 9\n8 5 40 2\n"
            "\nfl=(2)\nfn=(3)\n9 5 30 2\n"
            "cfi=(2)\ncfn=(4) f'2\ncalls=1 7\n10 2 10 1\n"
            "cfi=(2)\ncfn=(5) f'1.2\ncalls=1 7\n0 1 1 1\n"
            "\nfl=(2)\nfn=(4)\n7 2 10 1\n"
            "\nfl=(2)\nfn=(5)\n7 1 1 1\n");
}

TEST(Exports, GrowthIsNeverNegative) {
  Options how;
  how.weight = Weight::memory;
  EXPECT_EQ(exported(recursion, "folded", how),
            "request;f;g 30\nrequest;f;g;f 10\nrequest;g;f 1\n");
}

TEST(Exports, FunctionsOfOneNameInOneFileAreToldApartByTheirLines) {
  const std::string said = exported(
      "F: function user \"{closure}\" file \"/a.php\" line 7\n"
      "G: function user \"{closure}\" file \"/a.php\" line 9\n"
      "H: function user \"{closure}\" file \"/b.php\" line 9\nstartup @10\n"
      "a: call @10+1 fn F\nb: call @10+2 fn G\nc: call @10+3 fn H\nshutdown @10+9\n",
      "callgrind");
  EXPECT_THAT(said, HasSubstr(" {closure}:7\n"));
  EXPECT_THAT(said, HasSubstr(" {closure}:9\n"));
  EXPECT_THAT(said, HasSubstr(" {closure}\n"));
  EXPECT_THAT(said, Not(HasSubstr("'2")));
}

TEST(Exports, ASpanOfNoLengthIsAnInstantOfChrome) {
  const std::string said = exported(
      "F: function internal \"f\"\nstartup @10\na: call @10+5 fn F args [1]\nreturn @10+5 of a\n"
      "shutdown @10+9\n",
      "chrome");
  EXPECT_THAT(said, HasSubstr("{\"ph\":\"i\",\"s\":\"t\",\"pid\":1,\"tid\":1,\"ts\":0.005,\"name\":"
                              "\"f\",\"cat\":\"builtin\",\"args\":{\"id\":1,\"args\":[1],"
                              "\"returned\":null}},\n"
                              "{\"ph\":\"E\",\"pid\":1,\"tid\":1,\"ts\":0.009"));
}

TEST(Exports, NumbersThatADoubleCannotHoldAreTexts) {
  const std::string text =
      "F: function user \"f\"\nstartup @10\n"
      "a: call @10+1 fn F args [9007199254740992, 9007199254740993, -9007199254740993]\n";
  const std::string wanted =
      "\"args\":[9007199254740992,\"9007199254740993\",\"-9007199254740993\"]";
  EXPECT_THAT(exported(text, "jsonl"), HasSubstr(wanted));
  EXPECT_THAT(exported(text, "chrome"), HasSubstr(wanted));
}

// A trace of one function of this name that calls itself so often.
std::string of_function(std::string_view name, int calls, ByteOrder order) {
  TraceBuilder trace(order);
  const Ref function = trace.function({.name = name, .file = "/a;b\n.php", .line = 3});
  trace.add(CheckpointDraft::startup().time(10));
  std::vector<Ref> open;
  std::uint32_t time = 0;
  for (int i = 0; i != calls; ++i) {
    open.push_back(trace.add(CheckpointDraft::function_call(function).time(10, ++time)));
  }
  for (; !open.empty(); open.pop_back()) {
    trace.add(CheckpointDraft::function_return(open.back()).time(10, ++time));
  }
  trace.add(CheckpointDraft::shutdown().time(10, ++time));
  return trace.build();
}

TEST(Exports, NamesThatNoFormatWasMadeFor) {
  constexpr std::string_view name = "a;b\nc\x1b\x7f\xC2\x85\xE2\x80\xA8\xFF\"\\ (7) 'x";
  for (const ByteOrder order : both_orders) {
    const std::string trace = of_function(name, 1, order);
    EXPECT_EQ(exported_file(trace, "folded"),
              "request 2\n"
              "request;a:b\\nc\\x1b\\x7f\\x85\\u2028\xEF\xBF\xBD\"\\ (7) 'x 1\n");
    EXPECT_THAT(exported_file(trace, "callgrind"),
                HasSubstr("cfi=(2) /a;b\\n.php\n"
                          "cfn=(2) a;b\\nc\\x1b\\x7f\\x85\\u2028\xEF\xBF\xBD\"\\ (7) 'x\n"));
    const std::string json =
        "\"a;b\\nc\\u001b\x7f\xC2\x85\xE2\x80\xA8\xEF\xBF\xBD\\\"\\\\ (7) 'x\"";
    for (const char* format : {"speedscope", "chrome", "jsonl"}) {
      EXPECT_THAT(exported_file(trace, format), HasSubstr("\"name\":" + json)) << format;
    }
    EXPECT_THAT(exported_file(trace, "csv"),
                HasSubstr(",\"a;b\nc\x1b\x7f\xC2\x85\xE2\x80\xA8\xEF\xBF\xBD\"\"\\ (7) 'x\","));
  }
}

TEST(Exports, AFunctionWithoutNameHasOne) {
  const std::string trace = of_function("", 1, ByteOrder::little);
  EXPECT_EQ(exported_file(trace, "folded"), "request 2\nrequest;(no name) 1\n");
  EXPECT_THAT(exported_file(trace, "callgrind"), HasSubstr("cfn=(2) (no name)\n"));
  const std::string blank = of_function("  ", 1, ByteOrder::little);
  EXPECT_EQ(exported_file(blank, "folded"), "request 2\nrequest;(no name) 1\n");
  const std::string_view no_file =
      "F: function user \"f\" file \" \" line 3\nstartup @10\ncall @10 fn F\n";
  EXPECT_THAT(exported(no_file, "callgrind"), HasSubstr("cfi=(2) (no file)\ncfn=(2) f\n"));
}

// What is too deep counts for the last that is not, and the whole stays the whole.
TEST(Exports, StacksAndRecursionsHaveAnEnd) {
  const std::string trace = of_function("f", 3000, ByteOrder::little);
  const std::string folded = exported_file(trace, "folded");
  EXPECT_EQ(std::count(folded.begin(), folded.end(), '\n'), 1000);
  EXPECT_THAT(folded.substr(folded.rfind(';')), testing::EndsWith(";f 4003\n"));
  const std::string callgrind = exported_file(trace, "callgrind");
  EXPECT_THAT(callgrind, HasSubstr("summary: 6001 0 3000\n"));
  EXPECT_THAT(callgrind, HasSubstr(" f'1000\n"));
  EXPECT_THAT(callgrind, Not(HasSubstr("f'1001")));
  EXPECT_THAT(callgrind, testing::EndsWith("\n3 4001 0 2001\n"));
}

TEST(Exports, WithoutAnyWeightThereIsALine) {
  EXPECT_EQ(exported("startup @10\nshutdown @10\n", "folded"), "request 0\n");
}

TEST(Exports, OfNothing) {
  for (const ByteOrder order : both_orders) {
    const std::string nothing = TraceBuilder(order).build();
    EXPECT_EQ(exported_file(nothing, "folded"), "");
    EXPECT_THAT(exported_file(nothing, "speedscope"), HasSubstr("\"events\":[\n\n],"));
    EXPECT_THAT(exported_file(nothing, "chrome"), HasSubstr("\"started_ns\":null"));
    EXPECT_THAT(exported_file(nothing, "callgrind"), testing::EndsWith("\nsummary: 0 0 0\n"));
    EXPECT_THAT(exported_file(nothing, "jsonl"), testing::EndsWith("\"nodes\":0}\n"));
  }
}

TEST(Exports, UsualNamesComeFromTheTrace) {
  const auto name = [](const char* format, std::string_view trace, std::string table = {}) {
    Options how;
    how.table = std::move(table);
    return usual_name(*find_format(format), how, trace);
  };
  EXPECT_EQ(name("callgrind", "/tmp/request.ct"), "callgrind.out.request");
  EXPECT_EQ(name("chrome", "request.ct.gz"), "request.trace.json");
  EXPECT_EQ(name("speedscope", "-"), "trace.speedscope.json");
  EXPECT_EQ(name("csv", "a/b/c", "functions"), "c.functions.csv");
  EXPECT_EQ(name("sqlite", ".ct"), ".ct.sqlite");
}

}  // namespace
}  // namespace CT::Test
