// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_checkpoint.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "codetrace/model/ct_records.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Base;
using Checkpoint::Type;

// The record of a view's checkpoint, with a table of its own.
struct Decoded {
  explicit Decoded(const CheckpointView& view)
      : entities(Entities::make(view.file())), record(view, *entities) {}

  // The first of its own fields, if that is a number.
  std::uint32_t own_number() const { return Checkpoint::ScriptError(record).error_num(); }

  std::shared_ptr<Entities> entities;
  Base record;
};

TEST(CheckpointType, NamesOfAllCodes) {
  constexpr std::array<std::string_view, 20> names = {"STARTUP",
                                                      "SHUTDOWN",
                                                      "FUNCTION_CALL",
                                                      "METHOD_CALL",
                                                      "FUNCTION_RETURN",
                                                      "FUNCTION_EXCEPTION",
                                                      "INCLUDE_CALL",
                                                      "INCLUDE_RETURN",
                                                      "INCLUDE_EXCEPTION",
                                                      "SAPI_WRITE_START",
                                                      "SAPI_WRITE_END",
                                                      "SAPI_FLUSH",
                                                      "SAPI_HEADER",
                                                      "SAPI_SEND_HEADERS",
                                                      "SCRIPT_EXIT",
                                                      "SCRIPT_ERROR",
                                                      "CRASH",
                                                      "USER_EVENT",
                                                      "INVALID",
                                                      "INVALID"};
  for (std::size_t code = 0; code != names.size(); ++code) {
    EXPECT_EQ(type_name(static_cast<Type>(code)), names[code]);
  }
  EXPECT_EQ(type_name(static_cast<Type>(31)), "INVALID");
  EXPECT_EQ(type_name(static_cast<Type>(255)), "INVALID");
}

TEST(CheckpointBase, ViewOnNothingGivesAnInvalidRecord) {
  const File file{QString()};
  const Decoded made{CheckpointView(file)};
  EXPECT_FALSE(made.record.is_valid());
  EXPECT_EQ(made.own_number(), 0U);
  EXPECT_EQ(made.record.file(), nullptr);
  EXPECT_EQ(made.record.checkpoint(), nullptr);
  EXPECT_EQ(made.record.type(), Type::INVALID);
  EXPECT_EQ(made.record.flags(), 0);
  EXPECT_EQ(made.record.timestamp(), KTime::Timestamp());
  EXPECT_EQ(made.record.memory(), 0U);
  EXPECT_EQ(text_of(made.record.filename()), "(absent)");
  EXPECT_EQ(made.record.filename().orig_sz, -1);
  EXPECT_EQ(made.record.line_no(), 0U);
  EXPECT_FALSE(made.record.damage());
}

TEST(CheckpointBase, TypesWithoutNameGiveInvalidRecords) {
  for (std::uint8_t type = 18; type != 32; ++type) {
    for (const ByteOrder order : both_orders) {
      TraceBuilder trace(order);
      trace.add(CheckpointDraft::raw(type).time(1).memory(2));
      const OpenTrace open(trace);
      const Decoded made(open.view());
      EXPECT_FALSE(made.record.is_valid());
      EXPECT_EQ(made.record.type(), Type::INVALID);
      EXPECT_EQ(made.record.flags(), 0);
      EXPECT_EQ(made.record.checkpoint(), nullptr);
      EXPECT_EQ(made.record.timestamp(), KTime::Timestamp());
      EXPECT_EQ(made.record.memory(), 0U);
      EXPECT_EQ(made.own_number(), 0U);
      EXPECT_FALSE(made.record.damage());
      const Base sighted = Base::sighted(open.view(), *made.entities);
      EXPECT_FALSE(sighted.is_valid());
      EXPECT_EQ(sighted.type(), Type::INVALID);
      EXPECT_EQ(sighted.checkpoint(), nullptr);
      EXPECT_FALSE(sighted.damage());
    }
  }
}

TEST(CheckpointBase, CrashHasANameAndItsCommonFields) {
  for_both_orders("raw @3+4 16", [](OpenTrace& trace) {
    const Decoded made(trace.view());
    EXPECT_TRUE(made.record.is_valid());
    EXPECT_EQ(made.record.type(), Type::CRASH);
    EXPECT_EQ(made.record.timestamp(), (KTime::Timestamp{3, 4}));
  });
}

TEST(CheckpointBase, AnyCombinationOfCommonFieldsIsReadInOrder) {
  for (const ByteOrder order : both_orders) {
    for (std::uint8_t flags = 0; flags != 8; ++flags) {
      TraceBuilder trace(order);
      CheckpointDraft draft = CheckpointDraft::script_error(77, "text");
      if (flags & 1) draft.time(1'700'000'000, 999'999'999);
      if (flags & 2) draft.memory(UINT64_MAX);
      if (flags & 4) draft.location(trace.text("/a.php"), UINT32_MAX);
      trace.add(draft);
      const OpenTrace open(trace);
      const Decoded made(open.view());
      const Base& record = made.record;
      EXPECT_TRUE(record.is_valid());
      EXPECT_EQ(record.flags(), flags);
      EXPECT_EQ(record.timestamp(),
                (flags & 1) ? (KTime::Timestamp{1'700'000'000, 999'999'999}) : KTime::Timestamp());
      EXPECT_EQ(record.memory(), (flags & 2) ? UINT64_MAX : 0);
      EXPECT_EQ(text_of(record.filename()), (flags & 4) ? "/a.php" : "(absent)");
      EXPECT_EQ(record.line_no(), (flags & 4) ? UINT32_MAX : 0);
      EXPECT_EQ(made.own_number(), 77U);
      EXPECT_EQ(text_of(Checkpoint::ScriptError(record).error_message()), "text");
      EXPECT_FALSE(record.damage());
    }
  }
}

TEST(CheckpointBase, FlagsWithoutPayloadMeanNothing) {
  for_both_orders("shutdown @1 mem 2 at none:3 keep 0", [](OpenTrace& trace) {
    const Decoded made(trace.view());
    EXPECT_TRUE(made.record.is_valid());
    EXPECT_EQ(made.record.flags(), 0);
    EXPECT_EQ(made.record.payload_size(), 0U);
    EXPECT_EQ(made.own_number(), 0U);
    EXPECT_FALSE(made.record.damage());
  });
}

TEST(CheckpointBase, AddressOfTheHeaderWordIsTheIdentity) {
  for_both_orders("exit\nexit @1", [](OpenTrace& trace) {
    const unsigned char* data = trace.file().data().data();
    EXPECT_EQ(Decoded(trace.view(0)).record.checkpoint(), data);
    EXPECT_EQ(Decoded(trace.view(1)).record.checkpoint(), data + 4);
  });
}

TEST(CheckpointBase, LocationKeepsItsLineWhenTheFileNameIsUnknown) {
  for_both_orders("exit at none:7\nexit at 0x1:8\nexit at 0xffffffffffffffff:9",
                  [](OpenTrace& trace) {
                    for (std::uint32_t number = 0; number != 3; ++number) {
                      const Decoded made(trace.view(number));
                      EXPECT_TRUE(made.record.has_location());
                      EXPECT_EQ(text_of(made.record.filename()), "(absent)");
                      EXPECT_EQ(made.record.line_no(), 7 + number);
                      EXPECT_FALSE(made.record.damage());
                    }
                  });
}

TEST(CheckpointBase, TimestampIsKeptAsStored) {
  for_both_orders("exit @18446744073709551615+4294967295", [](OpenTrace& trace) {
    const Decoded made(trace.view());
    EXPECT_EQ(made.record.timestamp(), (KTime::Timestamp{-1, 4294967295}));
  });
}

TEST(CheckpointBase, FileNameEndsWithItsSection) {
  for_both_orders("X: add_data bytes(\"/no/nul\")\nexit at X:1\nexit at X+4:2",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(text_of(Decoded(trace.view(0)).record.filename()), "/no/nul");
                    EXPECT_EQ(text_of(Decoded(trace.view(1)).record.filename()), "nul");
                  });
}

// Seconds, nanoseconds, memory, file name, line begin at these offsets.
constexpr std::array<std::uint32_t, 6> field_offsets = {0, 8, 12, 20, 28, 32};

TEST(CheckpointBase, FieldThatIsNotWholeClearsItsFlagAndThoseBehindIt) {
  for (const ByteOrder order : both_orders) {
    for (std::uint32_t kept = 1; kept <= 32; ++kept) {
      SCOPED_TRACE(kept);
      TraceBuilder trace(order);
      trace.add(CheckpointDraft::script_exit()
                    .time(1, 2)
                    .memory(3)
                    .location(trace.text("/a"), 4)
                    .keep(kept));
      const OpenTrace open(trace);
      const Decoded made(open.view());
      const Base& record = made.record;
      EXPECT_TRUE(record.is_valid());
      EXPECT_EQ(record.has_timestamp(), kept >= 12);
      EXPECT_EQ(record.timestamp(), kept >= 12 ? (KTime::Timestamp{1, 2}) : KTime::Timestamp());
      EXPECT_EQ(record.has_memory(), kept >= 20);
      EXPECT_EQ(record.memory(), kept >= 20 ? 3U : 0U);
      EXPECT_EQ(record.has_location(), kept >= 32);
      EXPECT_EQ(text_of(record.filename()), kept >= 32 ? "/a" : "(absent)");
      EXPECT_EQ(record.line_no(), kept >= 32 ? 4U : 0U);
      std::optional<std::uint32_t> first_damaged;
      for (const std::uint32_t offset : field_offsets) {
        if (offset <= kept) first_damaged = offset;
      }
      if (kept == 32) first_damaged.reset();
      EXPECT_EQ(record.damage(), first_damaged);
    }
  }
}

TEST(CheckpointBase, BytesBehindTheLastFieldAreNoDamage) {
  for_both_orders("exit @1 more hex(ff ff ff)\nshutdown more hex(00)", [](OpenTrace& trace) {
    EXPECT_FALSE(trace.record(0)->damage());
    EXPECT_TRUE(trace.record(0)->has_timestamp());
    EXPECT_FALSE(trace.record(1)->damage());
  });
}

TEST(CheckpointBase, DamageIsAtTheFieldThatIsNotWhole) {
  for (std::size_t kept = 12; kept <= 24; ++kept) {
    for (const ByteOrder order : both_orders) {
      TraceBuilder trace(order);
      trace.add(CheckpointDraft::user_event(0, 5).time(1).keep(kept));
      const OpenTrace open(trace);
      const std::optional<std::uint32_t> field = kept < 20   ? std::optional(12U)
                                                 : kept < 24 ? std::optional(20U)
                                                             : std::nullopt;
      EXPECT_EQ(Decoded(open.view()).record.damage(), field) << kept;
    }
  }
}

}  // namespace
}  // namespace CT::Test
