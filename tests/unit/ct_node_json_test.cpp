// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <string>

#include "awkward.h"
#include "codetrace/render/ct_fields_json.h"
#include "codetrace/tree/ct_node.h"
#include "open_trace.h"
#include "rich_trace.h"
#include "value_names.h"

namespace CT::Test {
namespace {

// A node's members as compact JSON, which must be the same in both their forms.
std::string members(const Node::Base& node) {
  CT::Fields fields;
  ValueRoom values;
  JsonRoom room;
  node.collect(fields, values);
  const std::string streamed = written_json(
      JsonWriter::Form::compact, [&](JsonWriter& json) { write_json(fields, json, &room); });
  QJsonObject object;
  EXPECT_TRUE(node.to_json(object));
  EXPECT_EQ(QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString(), streamed);
  return streamed;
}

std::string members_of(OpenTrace& trace, Storage::NodeId id) {
  trace.read();
  EXPECT_LT(id, trace.storage().node_count());
  return members(*trace.storage().node(id));
}

// The members of node 1, whose parent is STARTUP.
void expect_node(std::string_view checkpoints, std::string_view expected) {
  SCOPED_TRACE(checkpoints);
  for_both_orders(checkpoints,
                  [&](OpenTrace& trace) { EXPECT_EQ(members_of(trace, 1), expected); });
}

TEST(NodeJson, LoneStartupHasNeitherParentNorElapsedTime) {
  for_both_orders("startup @12.5 mem 4096", [](OpenTrace& trace) {
    EXPECT_EQ(members_of(trace, 0), R"({"id":0,"name":"STARTUP","sys_mem":4096,"ts":"12.500000"})");
  });
  for_both_orders("startup", [](OpenTrace& trace) {
    EXPECT_EQ(members_of(trace, 0), R"({"id":0,"name":"STARTUP"})");
  });
}

TEST(NodeJson, StartupShowsItsTextsThatAreNotEmpty) {
  for_both_orders("startup url \"/u\" uri \"\" host none method \"GET\"", [](OpenTrace& trace) {
    EXPECT_EQ(members_of(trace, 0), R"({"id":0,"method":"GET","name":"STARTUP","url":"/u"})");
  });
  for_both_orders("startup uri \"/i\" host \"h\"", [](OpenTrace& trace) {
    EXPECT_EQ(members_of(trace, 0), R"({"host":"h","id":0,"name":"STARTUP","orig_uri":"/i"})");
  });
}

TEST(NodeJson, StartupWithAnEnd) {
  for_both_orders("startup @1 mem 100\nshutdown @1.25 mem 90", [](OpenTrace& trace) {
    EXPECT_EQ(members_of(trace, 0),
              R"({"id":0,"mem_delta":-10,"ms_delta":250,"name":"STARTUP","sys_mem":100,)"
              R"("ts":"1.000000"})");
  });
}

TEST(NodeJson, AbsoluteMemoryIsASignedNumber) {
  for_both_orders("startup mem 18446744073709551615", [](OpenTrace& trace) {
    EXPECT_EQ(members_of(trace, 0), R"({"id":0,"name":"STARTUP","sys_mem":-1})");
  });
}

TEST(NodeJson, CommonMembersOfABegin) {
  expect_node("startup @10 mem 1000\nexit @10.0015 mem 400 at \"/a\":4294967295",
              R"({"filename":"/a","id":1,"line_no":-1,"mem":-600,"ms":1.5,"name":"SCRIPT_EXIT",)"
              R"("parent_id":0,"ts":"10.001500"})");
  expect_node("startup\nexit at none:3",
              R"({"filename":"","id":1,"line_no":3,"name":"SCRIPT_EXIT","parent_id":0})");
}

TEST(NodeJson, ElapsedTimeIsShownAboveZeroOnly) {
  expect_node("startup @10\nexit @10",
              R"({"id":1,"name":"SCRIPT_EXIT","parent_id":0,"ts":"10.000000"})");
  expect_node("startup @10\nexit @9",
              R"({"id":1,"name":"SCRIPT_EXIT","parent_id":0,"ts":"9.000000"})");
  expect_node("startup @10\nexit @10+1",
              R"({"id":1,"ms":1e-06,"name":"SCRIPT_EXIT","parent_id":0,"ts":"10.000000"})");
  expect_node("startup @10\nexit mem 7", R"({"id":1,"mem":7,"name":"SCRIPT_EXIT","parent_id":0})");
}

TEST(NodeJson, TimestampIsRoundedAndNotCarried) {
  expect_node("startup @12\nexit @12+999999600",
              R"({"id":1,"ms":999.9996,"name":"SCRIPT_EXIT","parent_id":0,"ts":"12.1000000"})");
}

TEST(NodeJson, DeltasNeedBothEnds) {
  expect_node("startup @1 mem 1\nw: write @2 mem 5 \"x\"\nwrite_end @2.5 of w",
              R"({"body":{"string":"x"},"id":1,"mem":4,"ms":1000,"ms_delta":500,)"
              R"("name":"SAPI_WRITE","parent_id":0,"ts":"2.000000"})");
  expect_node("startup @1 mem 1\nw: write mem 5 \"x\"\nwrite_end @2.5 mem 5 of w",
              R"({"body":{"string":"x"},"id":1,"mem":4,"mem_delta":0,)"
              R"("name":"SAPI_WRITE","parent_id":0})");
}

TEST(NodeJson, PlainCallHasNoThis) {
  expect_node(
      "C: class user \"A\"\nF: function user \"f\" class C\nstartup\n"
      "c: call fn F args [1, undef, \"a\"]\nreturn of c value cut(\"b\", 9)",
      R"({"arg_count":3,"args":[1,null,{"string":"a"}],"function":0,"id":1,)"
      R"("name":"FUNCTION_CALL","parent_id":0,"return":{"orig_sz":9,"string":"b"}})");
}

TEST(NodeJson, MethodCallHasThisAndTheNameOfAFunctionCall) {
  expect_node(
      "C: class user \"A\"\nF: function user \"f\" class C\nstartup\n"
      "method fn F this obj(C, 7)",
      R"({"arg_count":0,"function":0,"id":1,"name":"FUNCTION_CALL","parent_id":0,)"
      R"("this":{"class":0,"handle":7}})");
  expect_node("F: function user \"f\"\nstartup\nmethod fn F this undef",
              R"({"arg_count":0,"function":0,"id":1,"name":"FUNCTION_CALL","parent_id":0})");
}

TEST(NodeJson, FunctionIsItsNumberInOrderOfFirstSighting) {
  for_both_orders("F: function user \"f\"\nG: function user \"g\"\nstartup\ncall fn G\ncall fn F",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(members_of(trace, 2),
                              R"({"arg_count":0,"function":1,"id":2,"name":"FUNCTION_CALL",)"
                              R"("parent_id":1})");
                  });
}

TEST(NodeJson, ArgumentsAreThereForACountThatIsNotZero) {
  expect_node("F: function user \"f\"\nstartup\ncall fn F count 4294967295",
              R"({"arg_count":-1,"args":[],"function":0,"id":1,"name":"FUNCTION_CALL",)"
              R"("parent_id":0})");
  expect_node("F: function user \"f\"\nstartup\ncall fn F args [1] count 0",
              R"({"arg_count":0,"function":0,"id":1,"name":"FUNCTION_CALL","parent_id":0})");
}

TEST(NodeJson, ConstructorsAndDestructorsHaveNoReturnButAnException) {
  for (const std::string name : {"__construct", "__destruct"}) {
    const std::string begin = "F: function user \"" + name + "\"\nstartup\nc: call fn F\n";
    constexpr std::string_view common =
        R"("function":0,"id":1,"name":"FUNCTION_CALL","parent_id":0})";
    expect_node(begin + "return of c value 1", R"({"arg_count":0,)" + std::string(common));
    expect_node(begin + "exception of c value 1",
                R"({"arg_count":0,"exception":1,)" + std::string(common));
  }
}

TEST(NodeJson, OutcomeDependsOnTheKindOfEnd) {
  const auto expect_outcome = [](std::string_view end, std::string_view first,
                                 std::string_view last) {
    expect_node("F: function user \"f\"\nstartup\nc: call fn F\n" + std::string(end),
                R"({"arg_count":0,)" + std::string(first) +
                    R"("function":0,"id":1,"name":"FUNCTION_CALL","parent_id":0)" +
                    std::string(last) + "}");
  };
  expect_outcome("return of c value null", "", R"(,"return":null)");
  expect_outcome("return of c value undef", "", "");
  expect_outcome("exception of c value [nan]", R"("exception":{"array":[null]},)", "");
  expect_outcome("exception of c value undef", "", "");
  expect_outcome("write_end of c", "", "");
  expect_outcome("include_exception of c value 1", "", "");
}

TEST(NodeJson, IncludeHasItsPathAndAnException) {
  expect_node("startup\ni: include \"a'\\\"\"\ninclude_return of i",
              R"({"id":1,"include":"a'\"","name":"INCLUDE_CALL","parent_id":0})");
  expect_node("startup\ni: include none\ninclude_exception of i value true",
              R"({"exception":true,"id":1,"include":"","name":"INCLUDE_CALL","parent_id":0})");
}

TEST(NodeJson, WrittenBodyIsAlwaysThere) {
  expect_node("startup\nwrite cut(\"a\\0\", 50)",
              R"({"body":{"orig_sz":50,"string":"a\u0000"},"id":1,"name":"SAPI_WRITE",)"
              R"("parent_id":0})");
  expect_node("startup\nwrite \"\"",
              R"({"body":{"string":""},"id":1,"name":"SAPI_WRITE","parent_id":0})");
}

TEST(NodeJson, HeaderOperations) {
  const auto expect_header = [](std::string_view record, std::string_view header,
                                std::string_view op) {
    expect_node("startup\nheader " + std::string(record),
                "{" + std::string(header) + R"("id":1,"name":"SAPI_HEADER",)" + std::string(op) +
                    R"("parent_id":0})");
  };
  constexpr std::string_view line = R"("header":{"string":"X"},)";
  expect_header("0 \"X\"", line, R"("op":"REPLACE",)");
  expect_header("1 \"X\"", line, R"("op":"ADD",)");
  expect_header("2 \"X\"", line, R"("op":"DELETE",)");
  expect_header("3", "", R"("op":"DELETE ALL",)");
  expect_header("4", "", R"("op":"SET STATUS",)");
  expect_header("7", "", "");
  expect_header("255", "", "");
}

TEST(NodeJson, FlushAndExitHaveNoMembersOfTheirOwn) {
  expect_node("startup\nflush", R"({"id":1,"name":"SAPI_FLUSH","parent_id":0})");
  expect_node("startup\nexit", R"({"id":1,"name":"SCRIPT_EXIT","parent_id":0})");
}

TEST(NodeJson, SentHeadersShowAStatusThatIsNotEmpty) {
  expect_node("startup\nsend_headers 200 \"OK\"",
              R"({"code":200,"id":1,"name":"SAPI_SEND_HEADERS","parent_id":0,"status":"OK"})");
  expect_node("startup\nsend_headers 4294967295",
              R"({"code":-1,"id":1,"name":"SAPI_SEND_HEADERS","parent_id":0})");
  expect_node("startup\nraw 13 more u32(1) u64(1) hex(00 00)",
              R"({"code":1,"id":1,"name":"SAPI_SEND_HEADERS","parent_id":0})");
}

TEST(NodeJson, ErrorShowsAMessageThatIsNotEmpty) {
  expect_node("startup\nerror 8 \"bad\\n\"",
              R"({"error_message":"bad\n","error_num":8,"id":1,"name":"SCRIPT_ERROR",)"
              R"("parent_id":0})");
  expect_node("startup\nerror 4294967295",
              R"({"error_num":-1,"id":1,"name":"SCRIPT_ERROR","parent_id":0})");
}

TEST(NodeJson, EventHasItsNameAsItStands) {
  expect_node("startup\nevent \"%1\" sequence 2147483648",
              R"({"event_name":"%1","event_sequence":-2147483648,"id":1,"name":"USER_EVENT",)"
              R"("parent_id":0})");
  expect_node("startup\nevent none sequence 0",
              R"({"event_name":"","event_sequence":0,"id":1,"name":"USER_EVENT","parent_id":0})");
}

TEST(NodeJson, InsertsIntoWhatIsThere) {
  OpenTrace trace(rich_trace(ByteOrder::little));
  trace.read();
  QJsonObject object{{QStringLiteral("incomplete"), true}};
  EXPECT_TRUE(trace.storage().node(0)->to_json(object));
  EXPECT_TRUE(object.value(QStringLiteral("incomplete")).toBool());
  EXPECT_TRUE(object.contains(QStringLiteral("sys_mem")));
}

TEST(NodeJson, RandomValuesAreTheSameInBothForms) {
  Awkward random(21);
  for (int i = 0; i != 2000; ++i) {
    ValueNames names(random.one_in(2) ? ByteOrder::little : ByteOrder::big);
    TraceBuilder& trace = names.trace;
    const auto any = [&] { return random.value(random.below(4), false, names); };
    const Ref function = trace.function({.name = "f"});
    trace.add(CheckpointDraft::startup());
    const Ref call = trace.add(CheckpointDraft::method_call(function, any(), {any(), any()}));
    trace.add(CheckpointDraft::function_return(call, any()));
    OpenTrace open(trace);
    EXPECT_GT(members_of(open, 1).size(), 50U);
  }
}

}  // namespace
}  // namespace CT::Test
