// SPDX-License-Identifier: MIT
//
// The walk over all checkpoints of a file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "finding_recorder.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void expect_messages(std::string_view text, const std::vector<std::string>& messages) {
  SCOPED_TRACE(text);
  for_both_orders(text, [&](OpenTrace& trace) {
    trace.read();
    EXPECT_EQ(trace.findings(), messages);
  });
}

// The types of the records that the visitor is shown.
std::string visited(OpenTrace& trace, std::size_t at_most = SIZE_MAX) {
  std::string types;
  std::size_t count = 0;
  trace.read([&](const Checkpoint::Base& record) {
    types += std::to_string(static_cast<int>(record.type())) + (record.is_valid() ? " " : "! ");
    return ++count < at_most;
  });
  return types;
}

TEST(Walk, EmptyDataHasNoRecordsAndNoMessages) {
  for_both_orders("T: text \"x\"", [](OpenTrace& trace) {
    EXPECT_EQ(visited(trace), "");
    EXPECT_THAT(trace.findings(), IsEmpty());
  });
}

TEST(Walk, UnopenedFileHasNoRecords) {
  const File file{QString()};
  FindingRecorder findings;
  Storage storage(file, &findings);
  read_checkpoints(file, storage, [](const Checkpoint::Base&) {
    ADD_FAILURE();
    return true;
  });
  EXPECT_EQ(storage.node_count(), 0);
  EXPECT_THAT(findings.lines(), IsEmpty());
}

TEST(Walk, ShowsEveryRecordInFileOrderAlsoInvalidOnes) {
  for_both_orders("exit\nstartup\nflush keep 0\nraw 16\nraw 31\ncall fn none\nshutdown",
                  [](OpenTrace& trace) { EXPECT_EQ(visited(trace), "14 0 11! 2! 1 "); });
}

TEST(Walk, RecordIsInTheTreeWhenItIsShown) {
  for_both_orders("startup\nflush\nexit", [](OpenTrace& trace) {
    std::vector<Storage::NodeId> counts;
    trace.read([&](const Checkpoint::Base&) {
      counts.push_back(trace.storage().node_count());
      return true;
    });
    EXPECT_THAT(counts, ElementsAre(1, 2, 3));
  });
}

TEST(Walk, VisitorEndsIt) {
  for_both_orders("startup\nflush\nraw 16\nexit\nshutdown\ndata hex(ff)", [](OpenTrace& trace) {
    EXPECT_EQ(visited(trace, 2), "0 11 ");
    EXPECT_EQ(trace.storage().node_count(), 2);
    EXPECT_THAT(trace.findings(), IsEmpty());
  });
}

TEST(Walk, UnknownTypesAreNamedAndSkipped) {
  std::string text = "startup\nraw 16 more u8(9)\n";
  std::vector<std::string> messages = {"0 Invalid checkpoint type 16"};
  for (int type = 18; type != 32; ++type) {
    text += "raw @1 " + std::to_string(type) + " more hex(01 02 03)\n";
    messages.emplace_back("0 Invalid checkpoint type 18");
  }
  expect_messages(text + "exit\nshutdown", messages);
  for_both_orders(text + "exit\nshutdown",
                  [](OpenTrace& trace) { EXPECT_EQ(visited(trace), "0 14 1 "); });
}

TEST(Walk, TreeMessagesComeInFileOrderAmongTheOthers) {
  expect_messages(
      "exit\nraw 16\nstartup\nraw 20\nstartup\nshutdown",
      {"0 SCRIPT_EXIT checkpoint without STARTUP checkpoint", "0 Invalid checkpoint type 16",
       "0 Invalid checkpoint type 18", "0 Duplicate STARTUP checkpoint"});
}

TEST(Walk, DamageIsNamedOnceWithTypeAndPlace) {
  expect_messages(
      "startup\nerror 8 \"abc\" keep 14\nexit @1 keep 11\nshutdown",
      {"0 SCRIPT_ERROR checkpoint at DATA offset 36: damaged at payload offset 12 of 14",
       "0 SCRIPT_EXIT checkpoint at DATA offset 54: damaged at payload offset 8 of 11"});
}

TEST(Walk, DamageIsNamedBeforeWhatTheTreeSays) {
  expect_messages("call @1 fn none keep 3\nshutdown @1 keep 5\nexit @1 keep 5",
                  {"0 FUNCTION_CALL checkpoint at DATA offset 0: damaged at payload offset 0 of 3",
                   "0 SHUTDOWN checkpoint at DATA offset 7: damaged at payload offset 0 of 5",
                   "0 SHUTDOWN checkpoint without STARTUP checkpoint",
                   "0 SCRIPT_EXIT checkpoint at DATA offset 16: damaged at payload offset 0 of 5",
                   "0 SCRIPT_EXIT checkpoint without STARTUP checkpoint"});
}

TEST(Walk, DamageInsideAValueIsNamedOnceThoughTheValueIsReadAgain) {
  for_both_orders(R"(
    F: function user "f"
    startup
    c: call fn F args [[1, [2, "abc"]]] keep 50
    return of c value [1] keep 12
    shutdown
  )",
                  [](OpenTrace& trace) {
                    trace.read();
                    EXPECT_EQ(trace.findings().size(), 2U);
                    EXPECT_EQ(trace.text(),
                              "REQUEST STARTUP: REQUEST: , URL: \n"
                              "  f(array(0 => 1, 1 => array()))\n");
                    trace.json();
                    EXPECT_EQ(trace.findings().size(), 2U);
                  });
}

TEST(Walk, CutHeaderWordIsNamed) {
  expect_messages(
      "startup\nexit\ndata hex(ff ff ff)",
      {"0 INVALID checkpoint at DATA offset 40: header word needs 4 bytes, 3 bytes left"});
  expect_messages(
      "data hex(00)",
      {"0 INVALID checkpoint at DATA offset 0: header word needs 4 bytes, 1 bytes left"});
}

TEST(Walk, CutPayloadIsNamedAndTheCheckpointLeftOut) {
  for_both_orders("startup\nwrite \"abcdef\" size 16777215\nexit", [](OpenTrace& trace) {
    EXPECT_EQ(visited(trace), "0 ");
    EXPECT_EQ(trace.storage().node_count(), 1);
    EXPECT_THAT(trace.findings(),
                ElementsAre("0 SAPI_WRITE_START checkpoint at DATA offset 36: payload needs "
                            "16777215 bytes, 14 bytes left"));
  });
}

TEST(Walk, CutPayloadOfAnUnknownTypeIsNamedInvalid) {
  expect_messages("raw 16 size 1",
                  {"0 CRASH checkpoint at DATA offset 0: payload needs 1 bytes, 0 bytes left"});
  expect_messages("raw 25 size 2 ",
                  {"0 INVALID checkpoint at DATA offset 0: payload needs 2 bytes, 0 bytes left"});
}

template <class List>
std::string names(const List& entities) {
  std::string all;
  for (const auto& entity : entities) all += text_of(entity.name()) + ' ';
  return all;
}

// The addresses of the entries, which are those of the table.
template <class List>
std::vector<const void*> places(const List& entities) {
  std::vector<const void*> all;
  for (const auto& entity : entities) all.push_back(&entity);
  return all;
}

constexpr std::string_view numbered_trace = R"(
  A: class user "A"
  B: class user "B"
  C: class user "C"
  D: class user "D"
  E: class user "E"
  G: class user "G"
  H: class user "H"
  f: function user "f" class B
  g: function user "g" class G
  h: function user "h"
  call fn none args [obj(A, 1)]
  m: method fn f this obj(D, 1) args [obj(C, 1), obj(B, 2)]
  startup
  i: include "x"
  return of m value ["**CUT**" => obj(E, 1), 1 => obj(A, 2)]
  include_exception of i value [0, [obj(H, 3)], ...]
  call fn h
  call fn g args [obj(E, 9)] keep 12
  shutdown
)";

TEST(Walk, NumbersFollowTheFirstSighting) {
  for_both_orders(numbered_trace, [](OpenTrace& trace) {
    trace.read();
    EXPECT_EQ(names(trace.storage().functions()), "f h g ");
    EXPECT_EQ(names(trace.storage().class_entries()), "B D C E A H G ");
    for (std::size_t i = 0; i != 7; ++i) {
      EXPECT_EQ(trace.storage().class_entries()[i].id(), static_cast<int>(i));
    }
    for (std::size_t i = 0; i != 3; ++i) {
      EXPECT_EQ(trace.storage().functions()[i].index(), static_cast<int>(i));
    }
  });
}

TEST(Walk, RenderingNumbersNothingAnew) {
  for_both_orders(numbered_trace, [](OpenTrace& trace) {
    trace.read([](const Checkpoint::Base& record) {
      written([&](Writer& out) { record.dump(out); });
      return true;
    });
    const auto functions = places(trace.storage().functions());
    const auto classes = places(trace.storage().class_entries());
    EXPECT_EQ(names(trace.storage().class_entries()), "B D C E A H G ");
    const std::string first = trace.json();
    trace.text();
    trace.text();
    as_json(trace.storage());
    EXPECT_EQ(places(trace.storage().functions()), functions);
    EXPECT_EQ(places(trace.storage().class_entries()), classes);
    EXPECT_EQ(trace.json(), first);
  });
}

TEST(Walk, DumpedRecordsNumberInTheOrderOfTheWalk) {
  // The dump of a record is made before the next one is read, and shows no later class.
  for (const ByteOrder order : both_orders) {
    OpenTrace plain(rich_trace(order));
    plain.read();
    OpenTrace dumped(rich_trace(order));
    dumped.read([](const Checkpoint::Base& record) {
      written([&](Writer& out) { record.dump(out); });
      return true;
    });
    EXPECT_EQ(names(dumped.storage().class_entries()), names(plain.storage().class_entries()));
    EXPECT_EQ(names(dumped.storage().functions()), names(plain.storage().functions()));
    EXPECT_EQ(dumped.json(), plain.json());
  }
}

}  // namespace
}  // namespace CT::Test
