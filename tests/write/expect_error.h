// SPDX-License-Identifier: MIT
//
// A record that fails: that it is told at its end, and that it leaves nothing behind.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "trace_builder.h"
#include "written_trace.h"

namespace CT::Test {

inline void write_exit(Write::TraceWriter& writer) {
  writer.begin(Checkpoint::Type::SCRIPT_EXIT);
  EXPECT_TRUE(writer.end());
  EXPECT_EQ(writer.error(), Write::Error::none);
}

// Ends the record that `write` leaves, which has to fail like this. What is in the file is what was
// written before and behind.
inline void expect_error(Write::Error error, const std::function<void(Write::TraceWriter&)>& write,
                         Write::Limits limits = {}) {
  Write::TraceWriter writer(options_of(ByteOrder::little, limits));
  write_exit(writer);
  write(writer);
  EXPECT_FALSE(writer.end());
  EXPECT_EQ(writer.error(), error) << Write::describe(writer.error());
  EXPECT_FALSE(writer.is_in_record());
  write_exit(writer);
  TraceBuilder expected;
  expected.add(CheckpointDraft::script_exit());
  expected.add(CheckpointDraft::script_exit());
  EXPECT_EQ(finished(writer), expected.build());
}

}  // namespace CT::Test
