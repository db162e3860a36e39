// SPDX-License-Identifier: MIT
//
// A storage in the hands of a program that adds records as it likes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "codetrace/ct_storage.h"
#include "codetrace/render/ct_fields_json.h"
#include "codetrace/render/ct_node_text.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(StorageRecords, ReturnsTheNodeThatWasOpenedMadeOrClosed) {
  for_both_orders("startup\nw: write \"\"\nflush\nwrite_end of w\nshutdown", [](OpenTrace& trace) {
    EXPECT_EQ(trace.storage().add_checkpoint(*trace.record(0)), 0);
    EXPECT_EQ(trace.storage().add_checkpoint(*trace.record(1)), 1);
    EXPECT_EQ(trace.storage().add_checkpoint(*trace.record(2)), 2);
    EXPECT_EQ(trace.storage().add_checkpoint(*trace.record(3)), 1);
    EXPECT_EQ(trace.storage().add_checkpoint(*trace.record(4)), 0);
    EXPECT_EQ(trace.storage().add_checkpoint(*trace.record(4)), Storage::no_node);
  });
}

TEST(StorageRecords, ObjectsAreReturnedForObjects) {
  for_both_orders("startup @1\nw: write \"x\"\nwrite_end of w\nflush keep 0", [](OpenTrace& trace) {
    const auto startup = trace.add(0);
    ASSERT_NE(startup, nullptr);
    EXPECT_EQ(startup->type(), Node::Type::STARTUP);
    const auto opened = trace.add(1);
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(opened->type(), Node::Type::SAPI_WRITE);
    EXPECT_FALSE(opened->is_complete());
    EXPECT_EQ(opened->parent_id(), 0);
    const auto closed = trace.add(2);
    ASSERT_NE(closed, nullptr);
    EXPECT_EQ(closed->id(), 1);
    EXPECT_TRUE(closed->is_complete());
    EXPECT_EQ(closed->end()->checkpoint(), trace.view(2).checkpoint());
    EXPECT_EQ(trace.add(3), nullptr);
  });
}

TEST(StorageRecords, EachAddFunctionClosesItsKind) {
  for_both_orders(R"(
    F: function user "f"
    startup
    a: call fn F
    return of a
    b: call fn F
    exception of b value null
    c: include "x"
    include_return of c
    d: include "x"
    include_exception of d value null
    shutdown
  )",
                  [](OpenTrace& trace) {
                    Storage& storage = trace.storage();
                    trace.add(0);
                    trace.add(1);
                    EXPECT_EQ(storage.add_function_return(*trace.record(2)), 1);
                    trace.add(3);
                    EXPECT_EQ(storage.add_function_exception(*trace.record(4)), 2);
                    trace.add(5);
                    EXPECT_EQ(storage.add_include_return(*trace.record(6)), 3);
                    trace.add(7);
                    EXPECT_EQ(storage.add_include_exception(*trace.record(8)), 4);
                    EXPECT_EQ(storage.add_shutdown(*trace.record(9)), 0);
                  });
}

TEST(StorageRecords, CrashIsAnUnknownType) {
  for_both_orders("startup\nraw 16 more u8(1)", [](OpenTrace& trace) {
    Storage& storage = trace.storage();
    trace.add(0);
    const Checkpoint::Base crash(trace.view(1), storage.entities());
    EXPECT_TRUE(crash.is_valid());
    EXPECT_EQ(storage.add_checkpoint(crash), Storage::no_node);
    EXPECT_THAT(trace.findings(), ElementsAre("0 Unknown checkpoint type 16"));
    EXPECT_EQ(storage.node_count(), 1);
  });
}

TEST(StorageRecords, EndOfTheWrongClassIsInvalid) {
  for_both_orders(
      R"(
    startup
    w: write ""
    return of w
    exception of w value null
    include_return of w
    include_exception of w value null
    write_end of w
    shutdown
  )",
      [](OpenTrace& trace) {
        Storage& storage = trace.storage();
        trace.add(0);
        trace.add(1);
        EXPECT_EQ(storage.add_function_exception(*trace.record(2)), Storage::no_node);
        EXPECT_EQ(storage.add_include_return(*trace.record(3)), Storage::no_node);
        EXPECT_EQ(storage.add_include_exception(*trace.record(4)), Storage::no_node);
        EXPECT_EQ(storage.add_function_return(*trace.record(5)), Storage::no_node);
        EXPECT_EQ(storage.add_include_return(*trace.record(6)), Storage::no_node);
        EXPECT_EQ(storage.add_shutdown(*trace.record(6)), Storage::no_node);
        EXPECT_EQ(storage.add_function_return(*trace.record(7)), Storage::no_node);
        EXPECT_EQ(storage.add_shutdown(*trace.record(1)), Storage::no_node);
        EXPECT_THAT(
            trace.findings(),
            ElementsAre(
                "0 Invalid FUNCTION_RETURN checkpoint", "0 Invalid FUNCTION_EXCEPTION checkpoint",
                "0 Invalid INCLUDE_RETURN checkpoint", "0 Invalid INCLUDE_EXCEPTION checkpoint",
                "0 Invalid SAPI_WRITE_END checkpoint", "0 Invalid SAPI_WRITE_END checkpoint",
                "0 Invalid SHUTDOWN checkpoint", "0 Invalid SAPI_WRITE_START checkpoint"));
        EXPECT_FALSE(storage.node(0)->is_complete());
        EXPECT_FALSE(storage.node(1)->is_complete());
        EXPECT_EQ(storage.summary().rejected, 8U);
      });
}

TEST(StorageRecords, OpenNodeIsMissedBeforeTheClassIsLookedAt) {
  for_both_orders("return of none", [](OpenTrace& trace) {
    EXPECT_EQ(trace.storage().add_include_return(*trace.record()), Storage::no_node);
    EXPECT_EQ(trace.storage().add_shutdown(*trace.record()), Storage::no_node);
    EXPECT_THAT(trace.findings(),
                ElementsAre("0 FUNCTION_RETURN checkpoint without STARTUP checkpoint",
                            "0 FUNCTION_RETURN checkpoint without STARTUP checkpoint"));
  });
}

TEST(StorageRecords, RecordOfAnotherFileIsRefusedWithoutAWord) {
  for_both_orders("startup\nflush", [](OpenTrace& trace) {
    OpenTrace other(rich_trace(ByteOrder::little));
    EXPECT_EQ(trace.storage().add_checkpoint(*other.record(0)), Storage::no_node);
    trace.add(0);
    EXPECT_EQ(trace.storage().add_checkpoint(*other.record(0)), Storage::no_node);
    EXPECT_EQ(trace.storage().node_count(), 1);
    EXPECT_THAT(trace.findings(), IsEmpty());
  });
}

TEST(StorageRecords, SameBeginTwiceMakesTwoNodesOfWhichTheLaterIsFound) {
  for_both_orders("startup\nw: write \"\"\nwrite_end of w\nshutdown", [](OpenTrace& trace) {
    trace.add(0);
    EXPECT_EQ(trace.add(1)->id(), 1);
    EXPECT_EQ(trace.add(1)->id(), 2);
    EXPECT_EQ(trace.storage().node(2)->parent_id(), 1);
    EXPECT_EQ(trace.add(2)->id(), 2);
    EXPECT_THAT(trace.findings(), IsEmpty());
    EXPECT_EQ(trace.add(2), nullptr);
    EXPECT_THAT(trace.findings(),
                ElementsAre("1 SAPI_WRITE node with ID 2 is not the last node in the stack",
                            "0 Nodes stack is corrupted"));
    EXPECT_FALSE(trace.storage().node(1)->is_complete());
    EXPECT_EQ(trace.add(3), nullptr);
  });
}

TEST(StorageRecords, SameBeginAgainBehindItsEndHidesTheClosedNode) {
  for_both_orders("startup\nw: write \"\"\nwrite_end of w", [](OpenTrace& trace) {
    for (const std::size_t number : {0U, 1U, 2U, 1U}) trace.add(number);
    EXPECT_EQ(trace.add(2)->id(), 2);
    EXPECT_TRUE(trace.storage().node(1)->is_complete());
    EXPECT_TRUE(trace.storage().node(2)->is_complete());
    EXPECT_THAT(trace.findings(), IsEmpty());
  });
}

TEST(StorageRecords, SameEndTwiceIsRefusedWhenTheTreeIsClosed) {
  for_both_orders("startup\nshutdown", [](OpenTrace& trace) {
    trace.add(0);
    EXPECT_NE(trace.add(1), nullptr);
    EXPECT_EQ(trace.add(1), nullptr);
    EXPECT_EQ(trace.add(0), nullptr);
  });
}

TEST(StorageRecords, PairsAreFoundWhateverTheOrderInTheFile) {
  for_both_orders(R"(
    F: function user "f"
    a: call fn F
    return of a
    b: include "x"
    include_return of b
    startup
  )",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(trace.add(4)->id(), 0);
                    EXPECT_EQ(trace.add(2)->id(), 1);
                    EXPECT_EQ(trace.add(0)->id(), 2);
                    EXPECT_EQ(trace.add(1)->id(), 2);
                    EXPECT_EQ(trace.add(3)->id(), 1);
                    EXPECT_EQ(trace.storage().node(2)->parent_id(), 1);
                    EXPECT_THAT(trace.findings(), IsEmpty());
                  });
}

// A node with everything that it shows.
std::string described(const Node::Base& node) {
  Node::TextRoom text_room;
  CT::Fields fields;
  ValueRoom values;
  JsonRoom room;
  node.collect(fields, values);
  const auto offset = [](const Node::Base::Record* record) {
    return record == nullptr ? "none" : std::to_string(record->offset());
  };
  const std::string text = written([&](Writer& out) { node.write_text(out, text_room); });
  const std::string json = written_json(JsonWriter::Form::compact,
                                        [&](JsonWriter& out) { write_json(fields, out, &room); });
  return text + '\n' + json + (node.is_complete() ? " complete " : " open ") +
         offset(&node.begin()) + ' ' + offset(node.end());
}

TEST(StorageRecords, NodeObjectsAgreeWithTheReader) {
  for (const ByteOrder order : both_orders) {
    OpenTrace trace(rich_trace(order));
    trace.read();
    NodeReader reader(trace.storage());
    for (Storage::NodeId id = trace.storage().node_count() - 1; id >= 0; --id) {
      const auto node = trace.storage().node(id);
      const Node::Base& read = reader.read(id);
      EXPECT_EQ(described(*node), described(read));
      EXPECT_EQ(node->id(), id);
      EXPECT_EQ(read.id(), id);
      EXPECT_EQ(node->type(), read.type());
      EXPECT_EQ(node->parent_id(), read.parent_id());
      EXPECT_EQ(node->ms_delta(), read.ms_delta());
      EXPECT_EQ(node->mem_delta(), read.mem_delta());
    }
  }
}

}  // namespace
}  // namespace CT::Test
