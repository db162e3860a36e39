// SPDX-License-Identifier: MIT
//
// A small trace with something of everything, cut at every byte and with every bit flipped: nothing
// may crash, and a shorter trace never has more in it. Best run under sanitizers.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_document.h"
#include "codetrace/render/ct_file_dump.h"
#include "codetrace/render/ct_records_dump.h"
#include "finding_recorder.h"
#include "kcommon/k_logger.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Type;
using Checkpoint::ValueType;

class Counter final : public Sink {
 public:
  bool write(std::string_view bytes) override {
    taken += bytes.size();
    return true;
  }
  std::size_t taken = 0;
};

class NoLog final : public KLogger::Sink {
 public:
  void println(KLogger::Level, const char*, int, std::string_view) override {}
};

struct Counts {
  std::size_t records = 0;
  Storage::NodeId nodes = 0;
  std::size_t functions = 0;
  std::size_t classes = 0;
  std::size_t bytes = 0;
};

class Damage : public testing::TestWithParam<ByteOrder> {
 protected:
  Damage() {
    KLogger::destroyInstance();
    KLogger::instance().addSink(std::make_unique<NoLog>(), 127);
  }
  ~Damage() override { KLogger::destroyInstance(); }

  // All five outputs of a file; nothing of one that cannot be opened.
  static Counts print(const std::string& bytes) {
    File file{QString()};
    Counts counts;
    if (!file.open(as_bytes(bytes), bytes.size())) return counts;
    Counter sink;
    StreamWriter out(sink);
    write_headers(file, out);
    write_binary(file, out);
    FindingRecorder findings;
    Storage storage(file, &findings);
    RecordDumper dumper;
    read_checkpoints(file, storage, [&](const Checkpoint::Base& record) {
      ++counts.records;
      dumper.write(record, out);
      return true;
    });
    write_json(storage, out);
    write_text(storage, out);
    EXPECT_TRUE(out.flush());
    counts.nodes = storage.node_count();
    counts.functions = storage.functions().size();
    counts.classes = storage.class_entries().size();
    counts.bytes = sink.taken;
    return counts;
  }

  static void expect_not_more(const Counts& shorter, const Counts& longer) {
    EXPECT_LE(shorter.records, longer.records);
    EXPECT_LE(shorter.nodes, longer.nodes);
    EXPECT_LE(shorter.functions, longer.functions);
    EXPECT_LE(shorter.classes, longer.classes);
    EXPECT_GT(shorter.bytes, 0U);
  }
};

TEST_P(Damage, RichTraceHasEverythingAndIsSmall) {
  OpenTrace trace(rich_trace(GetParam()));
  std::set<std::uint8_t> types;
  for (CheckpointView view(trace.file()); view.step();) types.insert(view.type());
  for (std::uint8_t type = 0; type != 18; ++type) EXPECT_TRUE(types.contains(type)) << int{type};
  EXPECT_TRUE(types.contains(20));
  std::set<ValueType> kinds;
  const auto call = trace.record<Checkpoint::FunctionCall>(2);
  for (const Checkpoint::KVal& value : call->args()) {
    kinds.insert(value.type());
    for (const auto& [key, element] : value.elements()) {
      kinds.insert(key.type());
      kinds.insert(element.type());
    }
  }
  EXPECT_EQ(kinds.size(), 10U);
  EXPECT_LT(rich_trace(GetParam()).build().size(), 2048U);
}

TEST_P(Damage, DataCutAtEveryByte) {
  const TraceBuilder whole = rich_trace(GetParam());
  Counts longer = print(whole.build());
  EXPECT_EQ(longer.nodes, 16);
  for (std::size_t gone = 1; gone <= whole.data_size(); ++gone) {
    SCOPED_TRACE(gone);
    TraceBuilder cut = whole;
    cut.cut_data(gone);
    const Counts shorter = print(cut.build());
    expect_not_more(shorter, longer);
    longer = shorter;
  }
  EXPECT_EQ(longer.records, 0U);
  EXPECT_EQ(longer.nodes, 0);
}

TEST_P(Damage, AddDataCutAtEveryByte) {
  const TraceBuilder whole = rich_trace(GetParam());
  Counts longer = print(whole.build());
  const std::size_t records = longer.records;
  for (std::size_t gone = 1; gone <= whole.add_data_size(); ++gone) {
    SCOPED_TRACE(gone);
    TraceBuilder cut = whole;
    cut.cut_add_data(gone);
    const Counts shorter = print(cut.build());
    expect_not_more(shorter, longer);
    EXPECT_EQ(shorter.records, records);
    longer = shorter;
  }
  EXPECT_EQ(longer.functions + longer.classes, 0U);
}

TEST_P(Damage, EveryBitFlipped) {
  const std::string whole = rich_trace(GetParam()).build();
  std::size_t opened = 0;
  for (std::size_t bit = 0; bit != 8 * whole.size(); ++bit) {
    SCOPED_TRACE(bit);
    std::string damaged = whole;
    const auto byte = static_cast<unsigned char>(damaged[bit / 8]);
    damaged[bit / 8] = static_cast<char>(byte ^ (1U << (bit % 8)));
    const Counts counts = print(damaged);
    opened += counts.bytes != 0 ? 1 : 0;
    EXPECT_LE(static_cast<std::size_t>(counts.nodes), counts.records);
  }
  // Magic, version and the two sizes must be right; all other bytes may be anything.
  constexpr std::size_t vital_bits = 8 * (2 + 1 + 4 + 4);
  EXPECT_EQ(opened, 8 * whole.size() - vital_bits);
}

INSTANTIATE_TEST_SUITE_P(Order, Damage, testing::ValuesIn(both_orders), [](const auto& order) {
  return order.param == ByteOrder::big ? "big" : "little";
});

}  // namespace
}  // namespace CT::Test
