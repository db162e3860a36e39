// SPDX-License-Identifier: MIT
#include "codetrace/ct_storage.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Every node as "id(parent)" with a "?" unless it is complete.
std::string tree(OpenTrace& trace) {
  std::string all;
  for (Storage::NodeId id = 0; id != trace.storage().node_count(); ++id) {
    const auto node = trace.storage().node(id);
    all += fmt::format("{}{}({}){}", id == 0 ? "" : " ", node->id(), node->parent_id(),
                       node->is_complete() ? "" : "?");
  }
  return all;
}

// Hands a trace to a storage: the tree and the messages that come of it.
void expect_tree(std::string_view text, std::string_view expected,
                 const std::vector<std::string>& messages) {
  SCOPED_TRACE(text);
  for_both_orders(text, [&](OpenTrace& trace) {
    trace.read();
    EXPECT_EQ(tree(trace), expected);
    EXPECT_EQ(trace.findings(), messages);
  });
}

TEST(Storage, BuildsACallUnderStartup) {
  expect_tree("F: function user \"f\"\nstartup\nc: call fn F\nreturn of c\nshutdown", "0(-1) 1(0)",
              {});
}

TEST(Storage, FirstCheckpointMustBeStartup) {
  expect_tree("F: function user \"f\"\ncall fn F", "",
              {"0 FUNCTION_CALL checkpoint without STARTUP checkpoint"});
}

TEST(Storage, NothingFitsBeforeStartup) {
  const auto refused = [](std::string_view name) {
    return "0 " + std::string(name) + " checkpoint without STARTUP checkpoint";
  };
  expect_tree(R"(
    F: function user "f"
    shutdown
    call fn F
    method fn F this null
    return of 1
    exception of 1 value null
    include none
    include_return of 1
    include_exception of 1 value null
    write ""
    write_end of 1
    flush
    header 3
    send_headers 200
    exit
    error 1
    event none sequence 1
    startup
    exit
  )",
              "0(-1)? 1(0)",
              {refused("SHUTDOWN"), refused("FUNCTION_CALL"), refused("METHOD_CALL"),
               refused("FUNCTION_RETURN"), refused("FUNCTION_EXCEPTION"), refused("INCLUDE_CALL"),
               refused("INCLUDE_RETURN"), refused("INCLUDE_EXCEPTION"), refused("SAPI_WRITE_START"),
               refused("SAPI_WRITE_END"), refused("SAPI_FLUSH"), refused("SAPI_HEADER"),
               refused("SAPI_SEND_HEADERS"), refused("SCRIPT_EXIT"), refused("SCRIPT_ERROR"),
               refused("USER_EVENT")});
}

TEST(Storage, NothingFitsBehindShutdown) {
  expect_tree("startup\nshutdown\nflush\nstartup\nshutdown\nw: write \"\"\nwrite_end of w", "0(-1)",
              {"0 SAPI_FLUSH checkpoint without STARTUP checkpoint",
               "0 Duplicate STARTUP checkpoint", "0 SHUTDOWN checkpoint without STARTUP checkpoint",
               "0 SAPI_WRITE_START checkpoint without STARTUP checkpoint",
               "0 SAPI_WRITE_END checkpoint without STARTUP checkpoint"});
}

TEST(Storage, SecondStartupIsRefusedAndResetsNothing) {
  for_both_orders("startup @10 mem 100\nstartup @20 mem 500\nexit @11 mem 150",
                  [](OpenTrace& trace) {
                    trace.read();
                    EXPECT_THAT(trace.findings(), ElementsAre("0 Duplicate STARTUP checkpoint"));
                    EXPECT_EQ(trace.storage().node(1)->ms(), 1000.0);
                    EXPECT_EQ(trace.storage().node(1)->mem(), 50);
                  });
}

TEST(Storage, StartOfTheRequestIsZeroWhereStartupDoesNotTell) {
  for_both_orders("startup\nexit @2 mem 7", [](OpenTrace& trace) {
    trace.read();
    EXPECT_EQ(trace.storage().node(1)->ms(), 2000.0);
    EXPECT_EQ(trace.storage().node(1)->mem(), 7);
  });
}

TEST(Storage, LeavesGoUnderTheInnermostOpenNode) {
  expect_tree(R"(
    F: function user "f"
    startup
    flush
    a: call fn F
    header 3
    b: method fn F this null
    error 1
    return of b
    send_headers 200
    w: write ""
    flush
    write_end of w
    return of a
    event none sequence 1
    i: include "x"
    exit
    include_exception of i value null
    shutdown
  )",
              "0(-1) 1(0) 2(0) 3(2) 4(2) 5(4) 6(2) 7(2) 8(7) 9(0) 10(0) 11(10)", {});
}

TEST(Storage, EndOfAnOuterNodeLeavesTheInnerOnesIncomplete) {
  expect_tree(R"(
    F: function user "f"
    startup
    i: include "x"
    c: call fn F
    include_return of i
    flush
    shutdown
  )",
              "0(-1) 1(0) 2(1)? 3(0)",
              {"1 INCLUDE_CALL node with ID 1 is not the last node in the stack"});
}

TEST(Storage, LostEndsAreNamedAfterTheRecordThatFoundThem) {
  expect_tree("startup\ni: include \"x\"\nw: write \"\"\nwrite_end of i\nshutdown",
              "0(-1) 1(0) 2(1)?",
              {"1 SAPI_WRITE node with ID 1 is not the last node in the stack"});
  expect_tree("startup\ni: include \"x\"\nw: write \"\"\nexception of i value null",
              "0(-1)? 1(0) 2(1)?",
              {"1 FUNCTION_CALL node with ID 1 is not the last node in the stack"});
}

TEST(Storage, SecondReturnOfACallEndsTheTree) {
  expect_tree(
      R"(
    F: function user "f"
    startup
    c: call fn F
    return of c
    return of c
    flush
    return of c
    startup
    shutdown
  )",
      "0(-1)? 1(0)",
      {"1 FUNCTION_CALL node with ID 1 is not the last node in the stack",
       "0 Nodes stack is corrupted", "0 SAPI_FLUSH checkpoint without STARTUP checkpoint",
       "0 FUNCTION_RETURN checkpoint without STARTUP checkpoint", "0 Duplicate STARTUP checkpoint",
       "0 SHUTDOWN checkpoint without STARTUP checkpoint"});
}

TEST(Storage, ShutdownClosesStartupOverOpenNodesWithoutAWord) {
  expect_tree("F: function user \"f\"\nstartup\ncall fn F\nwrite \"\"\nshutdown",
              "0(-1) 1(0)? 2(1)?", {});
}

TEST(Storage, OnlyTheReturnOfAnIncludeLooksAtTheType) {
  constexpr std::string_view function = "F: function user \"f\"\nstartup\n";
  for (const std::string_view begin : {"call fn F", "method fn F this null"}) {
    expect_tree(fmt::format("{}c: {}\ninclude_return of c", function, begin), "0(-1)? 1(0)?",
                {"0 Expected INCLUDE_CALL node, but got FUNCTION_CALL"});
  }
  expect_tree("startup\nw: write \"\"\ninclude_return of w", "0(-1)? 1(0)?",
              {"0 Expected INCLUDE_CALL node, but got SAPI_WRITE"});
  for (const std::string_view end : {"return of s", "exception of s value null",
                                     "include_exception of s value null", "write_end of s"}) {
    for (const std::string_view begin : {"call fn F", "include \"a\"", "write \"\""}) {
      expect_tree(fmt::format("{}s: {}\n{}", function, begin, end), "0(-1)? 1(0)", {});
    }
  }
}

TEST(Storage, TypeIsLookedAtBeforeTheNesting) {
  expect_tree(R"(
    startup
    w: write ""
    i: include "a"
    include_return of w
    include_return of i
    write_end of w
    shutdown
  )",
              "0(-1) 1(0) 2(1)", {"0 Expected INCLUDE_CALL node, but got SAPI_WRITE"});
}

// The message about a start address, which is a place in this process.
std::string not_found(std::string_view node, std::uint64_t address) {
  return fmt::format("0 No {} node found with address {}", node,
                     fmt::ptr(std::bit_cast<const void*>(address)));
}

TEST(Storage, EndWithoutItsBeginIsRefused) {
  for_both_orders(
      R"(
    base data 0x1000
    s: startup
    l: flush
    return of none
    exception of 0x900 value null
    include_return of s
    include_exception of l value null
    write_end of s+1
    shutdown
  )",
      [](OpenTrace& trace) {
        trace.read();
        const auto data = std::bit_cast<std::uint64_t>(trace.file().data().data());
        EXPECT_THAT(
            trace.findings(),
            ElementsAre(not_found("FUNCTION_CALL", 0), not_found("FUNCTION_CALL", data - 0x700),
                        not_found("INCLUDE_CALL", data), not_found("INCLUDE_CALL", data + 36),
                        not_found("SAPI_WRITE", data + 1)));
        EXPECT_EQ(tree(trace), "0(-1) 1(0)");
      });
}

TEST(Storage, EndBeforeItsBeginFindsNothing) {
  for_both_orders(
      "F: function user \"f\"\nstartup\nreturn of 0x10000031\ncall fn F", [](OpenTrace& trace) {
        trace.read();
        const auto call = trace.view(2).checkpoint();
        EXPECT_THAT(trace.findings(),
                    ElementsAre(not_found("FUNCTION_CALL", std::bit_cast<std::uint64_t>(call))));
        EXPECT_EQ(tree(trace), "0(-1)? 1(0)?");
      });
}

TEST(Storage, InvalidRecordsAreRefusedWithoutAWord) {
  expect_tree("startup\ncall fn none\nflush keep 0\nwrite_end of none keep 0\nwrite \"\" keep 0",
              "0(-1)?", {});
}

TEST(Storage, NullIsRefusedWithoutAWord) {
  OpenTrace trace(rich_trace(ByteOrder::little));
  EXPECT_EQ(trace.storage().add_checkpoint(std::shared_ptr<const Checkpoint::Base>()), nullptr);
  EXPECT_THAT(trace.findings(), IsEmpty());
}

}  // namespace
}  // namespace CT::Test
