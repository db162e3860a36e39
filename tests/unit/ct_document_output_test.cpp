// SPDX-License-Identifier: MIT
//
// Documents whose output fails.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "codetrace/render/ct_document.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

// A writer that cannot hand on anything and counts how often it is asked to.
class BrokenWriter final : public Writer {
 public:
  BrokenWriter() { BrokenWriter::make_room(); }
  std::size_t asked() const { return asked_ - 1; }

 private:
  void make_room() override {
    if (asked_++ != 0) ok_ = false;
    at_ = buffer_.get();
    end_ = at_ + size;
  }

  static constexpr std::size_t size = 4096;
  std::unique_ptr<char[]> buffer_ = std::make_unique<char[]>(size);
  std::size_t asked_ = 0;
};

// How often each document asks a broken writer for room.
void expect_early_end(const TraceBuilder& trace) {
  OpenTrace open(trace);
  open.read();
  BrokenWriter text;
  write_text(open.storage(), text);
  EXPECT_FALSE(text.ok());
  EXPECT_LT(text.asked(), 5U);
  BrokenWriter json;
  write_json(open.storage(), json);
  EXPECT_FALSE(json.ok());
  EXPECT_LT(json.asked(), 5U);
}

TEST(Documents, BrokenOutputEndsTheNodesEarly) {
  const std::string body(3000, 'x');
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order);
    trace.add(CheckpointDraft::startup());
    for (int i = 0; i != 1000; ++i) {
      trace.add(CheckpointDraft::sapi_header(1, Fields().cut_string(body)));
    }
    expect_early_end(trace);
  }
}

TEST(Documents, BrokenOutputEndsTheClassesEarly) {
  const std::string name(3000, 'x');
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order);
    trace.add(CheckpointDraft::startup());
    for (int i = 0; i != 1000; ++i) {
      const Ref klass = trace.klass({.name = name});
      trace.add(
          CheckpointDraft::function_call(trace.function({.name = "f", .class_entry = klass})));
    }
    expect_early_end(trace);
  }
}

// A sink that takes so many bytes and no more.
class FullSink final : public Sink {
 public:
  explicit FullSink(std::size_t room) : room_(room) {}
  bool write(std::string_view bytes) override {
    EXPECT_FALSE(full_) << "a sink that failed is written to again";
    taken += bytes.substr(0, room_ - std::min(room_, taken.size()));
    full_ = taken.size() >= room_;
    return !full_;
  }

  std::string taken;

 private:
  std::size_t room_;
  bool full_ = false;
};

TEST(Documents, SinkThatFailsIsLeftAlone) {
  OpenTrace trace(rich_trace(ByteOrder::little));
  trace.read();
  const std::string whole = trace.json();
  FullSink sink(100);
  StreamWriter out(sink);
  write_json(trace.storage(), out);
  EXPECT_FALSE(out.flush());
  write_text(trace.storage(), out);
  EXPECT_FALSE(out.flush());
  EXPECT_EQ(sink.taken, whole.substr(0, 100));
}

}  // namespace
}  // namespace CT::Test
