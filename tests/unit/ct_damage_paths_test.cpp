// SPDX-License-Identifier: MIT
//
// The damage of a record is the same however somebody comes by it.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "codetrace/ct_trace.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

using Damage = std::optional<std::uint32_t>;

// By offset in DATA, as the walk shows it; counts those that are damaged.
struct Walked {
  std::map<std::uint32_t, Damage> damage;
  std::uint64_t damaged = 0;
};

Walked walk(OpenTrace& trace) {
  Walked walked;
  trace.read([&](const Checkpoint::Base& record) {
    walked.damage[record.offset()] = record.damage();
    walked.damaged += record.damage() ? 1U : 0U;
    return true;
  });
  return walked;
}

// Returns how many records are damaged.
std::uint64_t compare(const std::string& bytes) {
  OpenTrace trace(bytes);
  const Walked walked = walk(trace);
  EXPECT_EQ(trace.storage().summary().damaged, walked.damaged);
  for (CheckpointView view(trace.file()); view.step();) {
    const auto alone = Checkpoint::make_record(view, nullptr);
    EXPECT_EQ(alone != nullptr, walked.damage.contains(view.offset()));
    if (alone == nullptr) continue;
    const Damage& expected = walked.damage.at(view.offset());
    const auto with_storage = Checkpoint::make_record(view, &trace.storage().entities());
    const Checkpoint::Base found(view, trace.storage().entities());
    EXPECT_EQ(alone->damage(), expected);
    EXPECT_EQ(with_storage->damage(), expected);
    EXPECT_EQ(found.damage(), expected);
    EXPECT_EQ(found.is_valid(), alone->is_valid());
  }
  const auto expect_record = [&](const Checkpoint::Base& record) {
    EXPECT_EQ(record.damage(), walked.damage.at(record.offset()));
  };
  for (NodeId id = 0; id != trace.storage().node_count(); ++id) {
    const auto node = trace.storage().node(id);
    expect_record(node->begin());
    if (node->end() != nullptr) expect_record(*node->end());
    const Node::Base read = trace.storage().read(id);
    expect_record(read.begin());
    if (read.end() != nullptr) expect_record(*read.end());
  }
  return walked.damaged;
}

class DamagePaths : public testing::TestWithParam<ByteOrder> {};

INSTANTIATE_TEST_SUITE_P(BothOrders, DamagePaths, testing::ValuesIn(both_orders));

TEST_P(DamagePaths, AreTheSameForAWholeTrace) {
  EXPECT_EQ(compare(rich_trace(GetParam()).build()), 0U);
}

// Each bit of DATA in turn: types, flags, sizes, references, counts.
TEST_P(DamagePaths, AreTheSameWithEveryBitFlipped) {
  const TraceBuilder whole = rich_trace(GetParam());
  const std::string bytes = whole.build();
  std::uint64_t damaged = 0;
  for (std::size_t bit = 8 * FileHeader::disk_size;
       bit != 8 * (FileHeader::disk_size + whole.data_size()); ++bit) {
    SCOPED_TRACE(bit);
    std::string flipped = bytes;
    const auto byte = static_cast<unsigned char>(flipped[bit / 8]);
    flipped[bit / 8] = static_cast<char>(byte ^ (1U << (bit % 8)));
    damaged += compare(flipped);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(damaged, 500U);
}

TEST_P(DamagePaths, AreTheSameWithAddDataCut) {
  const TraceBuilder whole = rich_trace(GetParam());
  for (std::size_t gone = 1; gone <= whole.add_data_size(); ++gone) {
    TraceBuilder cut = whole;
    cut.cut_add_data(gone);
    compare(cut.build());
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace
}  // namespace CT::Test
