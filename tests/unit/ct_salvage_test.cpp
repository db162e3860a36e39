// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_salvage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "checkpoint_draft.h"
#include "codetrace/ct_trace.h"
#include "trace_builder.h"

namespace CT {
namespace {

using Salvage::Change;
using Test::ByteOrder;
using Test::CheckpointDraft;
using Test::Ref;
using Test::TraceBuilder;
namespace value = Test::value;

Salvage::Bytes bytes_of(const std::string& text) {
  const void* const begin = text.data();
  return {static_cast<const unsigned char*>(begin), text.size()};
}

// A file salvaged, and what the reader makes of it.
struct Mended {
  explicit Mended(const std::string& file) : made(Salvage::salvage(bytes_of(file))) {
    for (const Salvage::Bytes& part : made.parts()) {
      bytes.append(Section::as_chars(part.data()), part.size());
    }
    opens = trace.open(bytes_of(bytes).data(), bytes.size());
  }
  [[nodiscard]] std::uint64_t count(Change change) const { return made.report.sum(change).count; }
  // Names of the calls, in the order of the trace; those without an end have a "?".
  [[nodiscard]] std::vector<std::string> calls() const {
    std::vector<std::string> names;
    for (NodeId id = 0; id != trace.node_count(); ++id) {
      const Node::Base node = trace.node(id);
      if (node.type() != Node::Type::FUNCTION_CALL) continue;
      const auto* const function = record_as<Checkpoint::FunctionCall>(node.begin())->function();
      names.emplace_back(function->name().view());
      if (!node.is_complete()) names.back() += '?';
    }
    return names;
  }

  Salvage::Salvaged made;
  std::string bytes;
  Trace trace;
  bool opens = false;
};

class Salvaging : public testing::TestWithParam<ByteOrder> {
 protected:
  Ref call(const char* name) {
    return trace.add(CheckpointDraft::function_call(trace.function({.name = name}))
                         .time(1700000000 + ++time_)
                         .location(file_, 1));
  }
  Ref end(Ref start) {
    return trace.add(CheckpointDraft::function_return(start).time(1700000000 + ++time_));
  }
  TraceBuilder trace{GetParam()};

 private:
  Ref file_ = trace.text("/srv/x.php");
  std::uint64_t time_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Orders, Salvaging, testing::Values(ByteOrder::little, ByteOrder::big));

TEST_P(Salvaging, AWholeFileStaysAsItIs) {
  trace.add(CheckpointDraft::startup(trace.text("http://h/")));
  end(call("f"));
  call("open");
  const std::string file = trace.build();
  const Mended mended(file);
  EXPECT_TRUE(mended.made.report.is_whole);
  EXPECT_EQ(mended.bytes, file);
}

TEST_P(Salvaging, AnEndThatComesAgainIsDropped) {
  trace.add(CheckpointDraft::startup(trace.text("http://h/")));
  const Ref outer = call("outer");
  const Ref inner = call("inner");
  end(inner);
  end(inner);
  end(call("later"));
  end(outer);
  trace.add(CheckpointDraft::shutdown());
  const Mended mended(trace.build());
  EXPECT_EQ(mended.trace.summary().rejected, 0U);
  EXPECT_EQ(mended.count(Change::end_again), 1U);
  EXPECT_THAT(mended.calls(), testing::ElementsAre("outer", "inner", "later"));
}

TEST_P(Salvaging, AnEndThatLeadsAstrayClosesTheInnermostCall) {
  trace.add(CheckpointDraft::startup(trace.text("http://h/")));
  const Ref outer = call("outer");
  const Ref inner = call("inner");
  end(inner + 2);
  end(outer);
  const Mended mended(trace.build());
  EXPECT_EQ(mended.count(Change::end_led_back), 1U);
  EXPECT_TRUE(mended.trace.summary().is_clean());
  EXPECT_THAT(mended.calls(), testing::ElementsAre("outer", "inner"));
}

TEST_P(Salvaging, AnEndThatWouldCloseWhatStillEndsIsNotBelieved) {
  trace.add(CheckpointDraft::startup(trace.text("http://h/")));
  const Ref outer = call("outer");
  const Ref middle = call("middle");
  call("inner");
  end(outer);
  end(middle);
  end(outer);
  const Mended mended(trace.build());
  EXPECT_EQ(mended.count(Change::end_led_back), 1U);
  EXPECT_TRUE(mended.trace.summary().is_clean());
  EXPECT_THAT(mended.calls(), testing::ElementsAre("outer", "middle", "inner"));
}

TEST_P(Salvaging, ABeginThatIsLostIsInvented) {
  trace.add(CheckpointDraft::startup(trace.text("http://h/")));
  const Ref lost = call("lost");
  end(call("inner"));
  end(lost);
  trace.patch_data(lost - trace.data_end() + trace.data_size(), std::string(12, '\0'));
  const Mended mended(trace.build());
  EXPECT_EQ(mended.count(Change::begin_invented), 1U);
  EXPECT_TRUE(mended.trace.summary().is_clean());
  EXPECT_THAT(mended.calls(), testing::ElementsAre("unknown#call", "inner"));
}

TEST_P(Salvaging, NamesThatAreLostAreToldApart) {
  trace.add(CheckpointDraft::startup(trace.text("http://h/")));
  const Ref twice = trace.function({.name = "f"});
  for (const Ref function : {twice, trace.function({.name = "g"}), twice}) {
    end(trace.add(CheckpointDraft::function_call(function)));
  }
  trace.cut_file(trace.add_data_size());
  const Mended mended(trace.build());
  const auto calls = mended.calls();
  ASSERT_EQ(calls.size(), 3U);
  EXPECT_THAT(calls[0], testing::StartsWith("unknown#"));
  EXPECT_NE(calls[0], calls[1]);
  EXPECT_EQ(calls[0], calls[2]);
}

TEST_P(Salvaging, ALostArgumentIsToldAsLost) {
  trace.add(CheckpointDraft::startup(trace.text("http://h/")));
  const Ref function = trace.function({.name = "f"});
  end(trace.add(CheckpointDraft::call_with_count(function, {}, 3, {value::integer(1)})));
  end(call("g"));
  const Mended mended(trace.build());
  EXPECT_EQ(mended.count(Change::value_replaced), 1U);
  EXPECT_TRUE(mended.trace.summary().is_clean());
  EXPECT_NE(mended.bytes.find("unknown#value"), std::string::npos);
  EXPECT_THAT(mended.calls(), testing::ElementsAre("f", "g"));
}

TEST_P(Salvaging, ABeginOfTheRequestIsInvented) {
  end(call("f"));
  end(call("g"));
  const Mended mended(trace.build());
  EXPECT_EQ(mended.count(Change::startup_invented), 1U);
  EXPECT_TRUE(mended.trace.summary().is_clean());
  EXPECT_THAT(mended.calls(), testing::ElementsAre("f", "g"));
}

TEST_P(Salvaging, TypesThatThereAreNotAreDropped) {
  trace.add(CheckpointDraft::startup(trace.text("http://h/")));
  trace.add(CheckpointDraft::raw(31));
  end(call("f"));
  const Mended mended(trace.build());
  EXPECT_EQ(mended.count(Change::unknown_type), 1U);
  EXPECT_TRUE(mended.trace.summary().is_clean());
}

TEST(Salvage, OfNothingComesAnEmptyTrace) {
  for (const std::string& file : {std::string(), std::string("CT"), std::string(1000, '\0')}) {
    const Mended mended(file);
    EXPECT_TRUE(mended.opens);
    EXPECT_EQ(mended.made.report.kept, 0U);
    EXPECT_EQ(mended.trace.node_count(), 0);
  }
}

}  // namespace
}  // namespace CT
