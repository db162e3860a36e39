// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_view.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "open_trace.h"

namespace CT::Test {
namespace {

std::uint32_t normalised(std::string_view word, bool big_endian) {
  return normalise_header(as_bytes(word), big_endian);
}

TEST(HeaderWord, LittleEndianWordIsTheNormalisedOne) {
  EXPECT_EQ(normalised(std::string_view("\xE0\x0C\x00\x00", 4), false), 0x00000CE0U);
}

TEST(HeaderWord, BigEndianWordIsReorderedAndNotSwapped) {
  EXPECT_EQ(normalised(std::string_view("\x07\x00\x00\x0C", 4), true), 0x00000CE0U);
  EXPECT_EQ(normalised(std::string_view("\xE0\x00\x00\x00", 4), true), 28U);
}

TEST(HeaderWord, EveryTypeAndFlagsInBothOrders) {
  std::mt19937 random(1);
  for (std::uint32_t code = 0; code != 256; ++code) {
    const auto type = static_cast<std::uint8_t>(code & 31);
    const auto flags = static_cast<std::uint8_t>(code >> 5);
    const auto size = static_cast<std::uint32_t>(random() & 0xFFFFFF);
    for (const ByteOrder order : both_orders) {
      const std::string word = header_word(order, type, flags, size);
      EXPECT_EQ(normalised(word, order == ByteOrder::big), (size << 8) | code);
    }
  }
}

// What a view says that stands on no checkpoint.
void expect_nothing(const CheckpointView& view) {
  EXPECT_FALSE(view.is_valid());
  EXPECT_EQ(view.checkpoint(), nullptr);
  EXPECT_EQ(view.payload(), nullptr);
  EXPECT_EQ(view.size(), 0U);
  EXPECT_EQ(view.type(), 0);
  EXPECT_EQ(view.presence(), 0);
  EXPECT_FALSE(view.cursor().ok());
  EXPECT_FALSE(view.cursor_at(0).ok());
  EXPECT_FALSE(view.cursor_at(1).ok());
}

TEST(CheckpointView, ShowsTypeFlagsAndPayloadInPlace) {
  for_both_orders("raw 21 more hex(aa bb)\nerror @1 mem 2 at none:3 8\nevent mem 1 none sequence 1",
                  [](OpenTrace& trace) {
                    const unsigned char* data = trace.file().data().data();
                    const CheckpointView first = trace.view(0);
                    EXPECT_TRUE(first.is_valid());
                    EXPECT_EQ(first.type(), 21);
                    EXPECT_EQ(first.checkpoint(), data);
                    EXPECT_EQ(first.payload(), data + 4);
                    EXPECT_EQ(first.size(), 2U);
                    EXPECT_FALSE(first.has_timestamp() || first.has_memory());
                    EXPECT_FALSE(first.has_location());
                    const CheckpointView second = trace.view(1);
                    EXPECT_EQ(second.type(), 15);
                    EXPECT_EQ(second.offset(), 6U);
                    EXPECT_EQ(second.size(), 12U + 8 + 12 + 4 + 8);
                    EXPECT_TRUE(second.has_timestamp() && second.has_memory());
                    EXPECT_TRUE(second.has_location());
                    const CheckpointView third = trace.view(2);
                    EXPECT_EQ(third.offset(), 6U + 4 + 44);
                    EXPECT_FALSE(third.has_timestamp() || third.has_location());
                    EXPECT_TRUE(third.has_memory());
                  });
}

TEST(CheckpointView, CursorReadsThePayloadAndNoFurther) {
  for_both_orders("raw 20 more u32(7) u8(9)\nflush", [](OpenTrace& trace) {
    const CheckpointView view = trace.view();
    Cursor cursor = view.cursor();
    EXPECT_EQ(cursor.u32(), 7U);
    EXPECT_EQ(cursor.u8(), 9);
    EXPECT_EQ(cursor.left(), 0U);
    cursor.u8();
    EXPECT_FALSE(cursor.ok());
    Cursor behind = view.cursor_at(4);
    EXPECT_EQ(behind.left(), 1U);
    EXPECT_EQ(behind.u8(), 9);
  });
}

TEST(CheckpointView, CheckpointWithoutPayloadHasAFailedCursor) {
  for_both_orders("exit @1 keep 0\nshutdown", [](OpenTrace& trace) {
    const CheckpointView view = trace.view();
    EXPECT_TRUE(view.has_timestamp());
    EXPECT_EQ(view.size(), 0U);
    EXPECT_EQ(view.payload(), nullptr);
    EXPECT_FALSE(view.cursor().ok());
    EXPECT_EQ(trace.view(1).offset(), 4U);
  });
}

TEST(CheckpointView, ZeroWordIsAStartupWithoutPayload) {
  for_both_orders("data hex(00 00 00 00)\nshutdown", [](OpenTrace& trace) {
    EXPECT_EQ(trace.view(0).type(), 0);
    EXPECT_EQ(trace.view(0).payload(), nullptr);
    EXPECT_EQ(trace.view(1).type(), 1);
    EXPECT_EQ(trace.view(1).offset(), 4U);
  });
}

TEST(CheckpointView, StepsToTheEndOfDataAndStaysThere) {
  for_both_orders("exit\nflush\nshutdown", [](OpenTrace& trace) {
    CheckpointView view(trace.file());
    EXPECT_FALSE(view.is_valid());
    std::string types;
    while (view.step()) types += std::to_string(view.type()) + ' ';
    EXPECT_EQ(types, "14 11 1 ");
    EXPECT_FALSE(view.step());
    EXPECT_FALSE(view.broken());
    EXPECT_FALSE(view.is_valid());
    EXPECT_EQ(view.checkpoint(), nullptr);
  });
}

TEST(CheckpointView, EmptyDataHasNoCheckpoints) {
  for_both_orders("T: text \"abc\"", [](OpenTrace& trace) {
    CheckpointView view(trace.file());
    EXPECT_FALSE(view.step());
    EXPECT_FALSE(view.is_valid());
    EXPECT_FALSE(view.broken());
  });
}

TEST(CheckpointView, UnopenedFileHasNoCheckpoints) {
  const File file{QString()};
  CheckpointView view(file);
  EXPECT_FALSE(view.step());
  EXPECT_FALSE(view.broken());
}

TEST(CheckpointView, LargestPayloadIsWhole) {
  constexpr std::uint32_t largest = 0xFFFFFF;
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order);
    trace.add(CheckpointDraft::raw(20, Fields().raw(std::string(largest, 'x'))));
    trace.add(CheckpointDraft::shutdown());
    OpenTrace open(trace);
    EXPECT_EQ(open.view(0).size(), largest);
    EXPECT_EQ(open.view(1).offset(), largest + 4);
  }
}

TEST(CheckpointView, CutHeaderWordEndsTheWalk) {
  for (const ByteOrder order : both_orders) {
    for (std::size_t left = 1; left != 4; ++left) {
      TraceBuilder trace(order);
      trace.add(CheckpointDraft::script_exit());
      trace.add(CheckpointDraft::script_error(8, "x"));
      trace.cut_data(trace.data_size() - 4 - left);
      const OpenTrace open(trace);
      CheckpointView view = open.view(0);
      EXPECT_FALSE(view.step());
      ASSERT_TRUE(view.broken());
      EXPECT_TRUE(view.broken()->in_header_word);
      EXPECT_EQ(view.broken()->type, 0);
      EXPECT_EQ(view.broken()->offset, 4U);
      EXPECT_EQ(view.broken()->wanted, 4U);
      EXPECT_EQ(view.broken()->left, left);
      expect_nothing(view);
      EXPECT_FALSE(view.step());
      ASSERT_TRUE(view.broken());
      EXPECT_EQ(view.broken()->offset, 4U);
    }
  }
}

TEST(CheckpointView, CutPayloadEndsTheWalkWithItsTypeKnown) {
  for (const ByteOrder order : both_orders) {
    for (std::uint32_t left = 0; left != 5; ++left) {
      TraceBuilder trace(order);
      trace.add(CheckpointDraft::script_exit());
      trace.add(CheckpointDraft::raw(9, Fields().raw(std::string(left, 'x'))).header_size(5));
      const OpenTrace open(trace);
      CheckpointView view = open.view(0);
      EXPECT_FALSE(view.step());
      ASSERT_TRUE(view.broken());
      EXPECT_FALSE(view.broken()->in_header_word);
      EXPECT_EQ(view.broken()->type, 9);
      EXPECT_EQ(view.broken()->offset, 4U);
      EXPECT_EQ(view.broken()->wanted, 5U);
      EXPECT_EQ(view.broken()->left, left);
      expect_nothing(view);
      EXPECT_FALSE(view.step());
      EXPECT_TRUE(view.broken());
      expect_nothing(view);
    }
  }
}

TEST(CheckpointView, AtShowsTheSameCheckpointAgain) {
  for_both_orders("exit\nerror @1 8 \"x\"\nflush", [](OpenTrace& trace) {
    const CheckpointView first = trace.view(1);
    const CheckpointView again = CheckpointView::at(trace.file(), first.offset());
    EXPECT_TRUE(again.is_valid());
    EXPECT_EQ(again.checkpoint(), first.checkpoint());
    EXPECT_EQ(again.payload(), first.payload());
    EXPECT_EQ(again.size(), first.size());
    EXPECT_EQ(again.type(), 15);
    EXPECT_TRUE(again.has_timestamp());
  });
}

// At every offset, and far behind the last one: what a view shows lies in DATA.
TEST(CheckpointView, AtAnyOffsetItStaysInData) {
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order);
    trace.add(CheckpointDraft::script_error(8, "text").time(1).memory(2));
    trace.add(CheckpointDraft::raw(9, Fields().raw("\xFF\xFF\xFF\xFF\xFF")));
    trace.add(CheckpointDraft::shutdown());
    const OpenTrace open(trace);
    const Section& data = open.file().data();
    std::vector<std::uint32_t> offsets = {0x7FFFFFFF, 0x80000000, 0xFFFFFFF0,
                                          0xFFFFFFFC, 0xFFFFFFFE, 0xFFFFFFFF};
    for (std::uint32_t i = 0; i != trace.data_size() + 8; ++i) offsets.push_back(i);
    std::size_t valid = 0;
    for (const std::uint32_t offset : offsets) {
      SCOPED_TRACE(offset);
      const CheckpointView view = CheckpointView::at(open.file(), offset);
      EXPECT_FALSE(view.broken());
      if (!view.is_valid()) {
        expect_nothing(view);
        CheckpointView next = view;
        EXPECT_FALSE(next.step());
        continue;
      }
      ++valid;
      EXPECT_EQ(view.offset(), offset);
      EXPECT_LE(std::uint64_t{offset} + 4 + view.size(), data.size());
      EXPECT_EQ(view.cursor().left(), view.size());
      for (const std::uint32_t at : {0U, 1U, view.size(), view.size() + 1, 0xFFFFFFFFU}) {
        const Cursor cursor = view.cursor_at(at);
        EXPECT_EQ(cursor.ok(), view.size() != 0 && at <= view.size());
        if (cursor.ok()) {
          EXPECT_LE(cursor.position() + cursor.left(), data.end());
        }
      }
    }
    EXPECT_GE(valid, 3U);
    EXPECT_LT(valid, trace.data_size());
  }
  const File closed{QString()};
  expect_nothing(CheckpointView::at(closed, 0));
  expect_nothing(CheckpointView::at(closed, 0xFFFFFFFF));
}

}  // namespace
}  // namespace CT::Test
