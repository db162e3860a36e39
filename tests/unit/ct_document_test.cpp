// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_document.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <string>

#include "awkward.h"
#include "open_trace.h"
#include "rich_trace.h"
#include "value_names.h"

namespace CT::Test {
namespace {

// What Qt prints of the same document, and the newline behind it.
std::string qt_document(OpenTrace& trace) {
  return QJsonDocument(as_json(trace.storage())).toJson(QJsonDocument::Indented).toStdString() +
         "\n";
}

TEST(Outline, ChildrenStandDeeperThanTheirParents) {
  Outline outline;
  EXPECT_EQ(outline.place(0, -1), 0U);
  EXPECT_EQ(outline.place(1, 0), 1U);
  EXPECT_EQ(outline.place(2, 1), 2U);
  EXPECT_EQ(outline.place(3, 2), 3U);
  EXPECT_EQ(outline.place(4, 2), 3U);
  EXPECT_EQ(outline.place(5, 0), 1U);
  EXPECT_EQ(outline.place(6, 5), 2U);
}

TEST(Outline, SecondNodeWithoutParentStandsUnderTheLastOne) {
  Outline outline;
  EXPECT_EQ(outline.place(0, -1), 0U);
  EXPECT_EQ(outline.place(1, -1), 1U);
  EXPECT_EQ(outline.place(2, 1), 2U);
  EXPECT_EQ(outline.place(3, -1), 3U);
  EXPECT_EQ(outline.place(4, 0), 1U);
}

TEST(Outline, NodeWhoseParentIsNotAmongTheLastOnesStandsAtTheEdge) {
  Outline outline;
  EXPECT_EQ(outline.place(0, -1), 0U);
  EXPECT_EQ(outline.place(1, 0), 1U);
  EXPECT_EQ(outline.place(2, 0), 1U);
  EXPECT_EQ(outline.place(3, 1), 0U);
  EXPECT_EQ(outline.place(4, 0), 0U);
}

TEST(TextDocument, LoneStartupIsOneLine) {
  for_both_orders("startup url \"/u\" uri \"/i\"", [](OpenTrace& trace) {
    trace.read();
    EXPECT_EQ(trace.text(), "? REQUEST STARTUP: REQUEST: /u, URL: /i\n");
  });
}

TEST(TextDocument, WithoutNodesThereIsNothing) {
  for_both_orders("flush", [](OpenTrace& trace) {
    trace.read();
    EXPECT_EQ(trace.text(), "");
  });
}

TEST(TextDocument, IndentsTwoBlanksALevelAndMarksWhatIsNotComplete) {
  for_both_orders(R"(
    F: function internal "strlen"
    G: function user "g"
    startup
    i: include "a.php"
    c: call fn F args ["abc"]
    return of c value 3
    call fn G args [1]
    header 9
    write "x"
    header 3
    include_return of i
    exit
    shutdown
  )",
                  [](OpenTrace& trace) {
                    trace.read();
                    EXPECT_EQ(trace.text(),
                              "REQUEST STARTUP: REQUEST: , URL: \n"
                              "  include a.php\n"
                              "    *strlen(\"abc\") Returned: 3\n"
                              "    ? g(1)\n"
                              "      \n"
                              "      ? WRITE: \"x\"\n"
                              "        HEADER DELETE ALL\n"
                              "  SCRIPT_EXIT\n");
                  });
}

TEST(JsonDocument, WithoutNodesItHasThreeEmptyArrays) {
  for_both_orders("flush", [](OpenTrace& trace) {
    trace.read();
    EXPECT_EQ(trace.json(),
              "{\n    \"cl\": [\n    ],\n    \"cp\": [\n    ],\n    \"fn\": [\n    ]\n}\n\n");
    EXPECT_EQ(trace.json(), qt_document(trace));
  });
}

TEST(JsonDocument, HoldsNodesFunctionsAndClasses) {
  for_both_orders(R"(
    C: class user "A" flags 1 file "/a.php" line 4294967295
    D: class internal "B" file "/no" line 3
    F: function user "f" class C file "/f.php" line 9
    G: function internal "g" class D file "/no" line 3
    H: function user none
    startup
    a: call fn F
    return of a value obj(D, 1)
    call fn G
    call fn H
  )",
                  [](OpenTrace& trace) {
                    trace.read();
                    const std::string json = trace.json();
                    EXPECT_EQ(json, qt_document(trace));
                    EXPECT_EQ(json.substr(0, json.find("    \"cp\"")), R"({
    "cl": [
        {
            "filename": "/a.php",
            "id": 0,
            "line_no": 4294967295,
            "name": "A"
        },
        {
            "id": 1,
            "name": "B"
        }
    ],
)");
                    EXPECT_EQ(json.substr(json.find("    \"fn\"")), R"(    "fn": [
        {
            "class": 0,
            "filename": "/f.php",
            "id": 0,
            "line_no": 9,
            "name": "f"
        },
        {
            "class": 1,
            "id": 1,
            "name": "g"
        },
        {
            "id": 2,
            "name": ""
        }
    ]
}

)");
                  });
}

TEST(JsonDocument, NodesAreInOrderOfCreationAndSpansWithoutEndAreIncomplete) {
  for_both_orders("startup\nwrite \"\"\nflush", [](OpenTrace& trace) {
    trace.read();
    const std::string json = trace.json();
    EXPECT_EQ(json, qt_document(trace));
    EXPECT_EQ(
        json.substr(json.find("    \"cp\""), json.find("    \"fn\"") - json.find("    \"cp\"")),
        R"(    "cp": [
        {
            "id": 0,
            "incomplete": true,
            "name": "STARTUP"
        },
        {
            "body": {
                "string": ""
            },
            "id": 1,
            "incomplete": true,
            "name": "SAPI_WRITE",
            "parent_id": 0
        },
        {
            "id": 2,
            "name": "SAPI_FLUSH",
            "parent_id": 1
        }
    ],
)");
  });
}

TEST(JsonDocument, RichTraceIsWhatQtPrints) {
  for (const ByteOrder order : both_orders) {
    OpenTrace trace(rich_trace(order));
    trace.read();
    EXPECT_EQ(trace.storage().node_count(), 16);
    EXPECT_EQ(trace.json(), qt_document(trace));
  }
}

TEST(JsonDocument, RandomDocumentsAreWhatQtPrints) {
  Awkward random(31);
  for (int i = 0; i != 500; ++i) {
    ValueNames names(random.one_in(2) ? ByteOrder::little : ByteOrder::big);
    TraceBuilder& trace = names.trace;
    const auto name = [&] { return random.bytes(4); };
    const auto any = [&] { return random.value(random.below(5), false, names); };
    const auto time = [&] { return static_cast<std::uint32_t>(random.bits() % 2'000'000'000); };
    const Ref function =
        trace.function({.name = name(), .class_entry = names.classes[0], .file = "/f"});
    trace.add(CheckpointDraft::startup(trace.text(name()), trace.text(name())).time(1, time()));
    for (int call = 0; call != 5; ++call) {
      const Ref start = trace.add(CheckpointDraft::function_call(function, {any(), any()})
                                      .time(random.below(3), time())
                                      .memory(random.bits())
                                      .location(trace.text(name()), time()));
      trace.add(CheckpointDraft::script_error(8, name()));
      trace.add(CheckpointDraft::sapi_header(0, Fields().cut_string(name(), time())));
      trace.add(CheckpointDraft::function_return(start, any()).time(2, time()).memory(7));
    }
    OpenTrace open(trace);
    open.read();
    ASSERT_EQ(open.json(), qt_document(open)) << i;
  }
}

}  // namespace
}  // namespace CT::Test
