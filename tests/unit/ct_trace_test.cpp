// SPDX-License-Identifier: MIT
#include "codetrace/ct_trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "codetrace/render/ct_document.h"
#include "open_trace.h"
#include "rich_trace.h"
#include "temp_file.h"

namespace CT::Test {
namespace {

Trace opened(const std::string& bytes, FindingSink* sink = nullptr) {
  Trace trace;
  EXPECT_TRUE(trace.open(as_bytes(bytes), bytes.size(), sink)) << trace.error_message();
  return trace;
}

std::string text_of(const Trace& trace) {
  return written([&](Writer& out) { write_text(trace.storage(), out); });
}
std::string json_of(const Trace& trace) {
  return written([&](Writer& out) { write_json(trace.storage(), out); });
}

// A random trace, and the parent of each of its nodes in order of creation. Spans end in turn or,
// now and then, several at once, because the ends of the inner ones are lost.
class RandomTree {
 public:
  explicit RandomTree(std::mt19937& random) : trace_(ByteOrder::little) {
    const Ref function = trace_.function({.name = "f"});
    trace_.add(CheckpointDraft::startup());
    open_.push_back({0, 0});
    parents.push_back(Storage::no_node);
    const std::size_t count = 1 + random() % 60;
    while (parents.size() < count) {
      switch (random() % 6) {
        case 0:
        case 1: begin(trace_.add(CheckpointDraft::function_call(function))); break;
        case 2: begin(trace_.add(CheckpointDraft::include_call(0))); break;
        case 3:
          trace_.add(CheckpointDraft::script_exit());
          parents.push_back(open_.back().id);
          break;
        default: end(random); break;
      }
    }
  }

  std::string bytes() const { return trace_.build(); }

  std::vector<NodeId> parents;

 private:
  struct Open {
    NodeId id;
    Ref begin;
  };

  void begin(Ref ref) {
    parents.push_back(open_.back().id);
    open_.push_back({static_cast<NodeId>(parents.size()) - 1, ref});
  }

  void end(std::mt19937& random) {
    if (open_.size() == 1) return;
    const std::size_t place =
        random() % 4 != 0 ? open_.size() - 1 : 1 + random() % (open_.size() - 1);
    trace_.add(CheckpointDraft::function_return(open_[place].begin));
    open_.resize(place);
  }

  TraceBuilder trace_;
  std::vector<Open> open_;
};

// The same questions, answered by looking at every node.
struct PlainTree {
  const std::vector<NodeId>& parents;

  NodeId parent(NodeId id) const { return parents[static_cast<std::size_t>(id)]; }
  std::uint32_t depth(NodeId id) const {
    std::uint32_t count = 0;
    for (NodeId at = parent(id); at != Storage::no_node; at = parent(at)) ++count;
    return count;
  }
  bool is_under(NodeId id, NodeId above) const {
    while (id != Storage::no_node && id != above) id = parent(id);
    return id == above;
  }
  NodeId last(NodeId id) const {
    NodeId found = id;
    for (NodeId at = id; at != static_cast<NodeId>(parents.size()); ++at) {
      if (is_under(at, id)) found = at;
    }
    return found;
  }
  NodeId next_sibling(NodeId id) const {
    for (NodeId at = id + 1; at != static_cast<NodeId>(parents.size()); ++at) {
      if (parent(at) == parent(id)) return at;
    }
    return Storage::no_node;
  }
};

void expect_shape(const Trace& trace, const PlainTree& tree) {
  ASSERT_EQ(trace.node_count(), static_cast<NodeId>(tree.parents.size()));
  for (NodeId id = 0; id != trace.node_count(); ++id) {
    SCOPED_TRACE(id);
    EXPECT_EQ(trace.parent(id), tree.parent(id));
    EXPECT_EQ(trace.depth(id), tree.depth(id));
    EXPECT_EQ(trace.last(id), tree.last(id));
    EXPECT_EQ(trace.next_sibling(id), tree.next_sibling(id));
    EXPECT_EQ(trace.node(id).parent_id(), tree.parent(id));
    EXPECT_EQ(trace.node(id).type(), trace.type(id));
    EXPECT_EQ(trace.node(id).begin().offset(), trace.begin_offset(id));
  }
}

TEST(Trace, ShapeEqualsThatOfAPlainTree) {
  std::mt19937 random(5);
  for (int run = 0; run != 300; ++run) {
    SCOPED_TRACE(run);
    const RandomTree tree(random);
    expect_shape(opened(tree.bytes()), {tree.parents});
    if (testing::Test::HasFailure()) return;
  }
}

TEST(Trace, NothingIsOpenAtFirst) {
  const Trace trace;
  EXPECT_FALSE(trace.is_open());
  EXPECT_EQ(trace.node_count(), 0);
  EXPECT_EQ(trace.error_message(), "");
  EXPECT_TRUE(trace.summary().is_clean());
  EXPECT_EQ(text_of(trace), "");
}

TEST(Trace, ReadsWhatTheStorageReads) {
  for (const ByteOrder order : both_orders) {
    OpenTrace other(rich_trace(order));
    other.read();
    FindingRecorder findings;
    const Trace trace = opened(rich_trace(order).build(), &findings);
    EXPECT_TRUE(trace.is_open());
    EXPECT_EQ(text_of(trace), other.text());
    EXPECT_EQ(json_of(trace), other.json());
    EXPECT_EQ(findings.lines().size(), other.findings().size());
    EXPECT_EQ(trace.functions().size(), other.storage().functions().size());
    EXPECT_EQ(trace.classes().size(), other.storage().class_entries().size());
    EXPECT_EQ(trace.summary().records, other.storage().summary().records);
  }
}

TEST(Trace, OpensAFileByName) {
  const std::string bytes = rich_trace(ByteOrder::big).build();
  const TempFolder folder;
  Trace trace;
  ASSERT_TRUE(trace.open(folder.file(QStringLiteral("a.ct"), bytes).toStdString()));
  EXPECT_EQ(json_of(trace), json_of(opened(bytes)));
}

TEST(Trace, WhatCannotBeOpenedIsEmptyAndSaysWhy) {
  Trace trace = opened(rich_trace(ByteOrder::little).build());
  EXPECT_FALSE(trace.open("/no/such/file"));
  EXPECT_FALSE(trace.is_open());
  EXPECT_NE(trace.error_message(), "");
  EXPECT_EQ(trace.node_count(), 0);
  EXPECT_TRUE(trace.functions().empty());
  const std::string broken = rich_trace(ByteOrder::little).build().substr(1);
  EXPECT_FALSE(trace.open(as_bytes(broken), broken.size()));
  EXPECT_FALSE(trace.is_open());
  EXPECT_NE(trace.error_message(), "");
  const std::string whole = rich_trace(ByteOrder::little).build();
  EXPECT_TRUE(trace.open(as_bytes(whole), whole.size()));
  EXPECT_EQ(trace.error_message(), "");
  EXPECT_EQ(trace.node_count(), 16);
}

TEST(Trace, VisitsEachRecordWhileItReads) {
  const std::string bytes = rich_trace(ByteOrder::little).build();
  File file{QString()};
  ASSERT_TRUE(file.open(as_bytes(bytes), bytes.size()));
  Trace trace;
  std::uint64_t records = 0;
  trace.read(std::move(file), nullptr, [&](const Checkpoint::Base&) {
    ++records;
    return true;
  });
  EXPECT_EQ(trace.summary().records, records);
  EXPECT_EQ(json_of(trace), json_of(opened(bytes)));
}

TEST(Trace, StaysReadableWhenItIsMoved) {
  const std::string bytes = rich_trace(ByteOrder::big).build();
  Trace first = opened(bytes);
  const std::string text = text_of(first);
  const std::string json = json_of(first);
  const NodeId last = first.last(0);
  const Node::Base node = first.node(1);
  const unsigned char* data = first.file().data().data();
  const Trace second = std::move(first);
  EXPECT_EQ(text_of(second), text);
  EXPECT_EQ(json_of(second), json);
  EXPECT_EQ(second.last(0), last);
  EXPECT_EQ(second.file().data().data(), data);
  QString line;
  EXPECT_TRUE(node.to_text(line));
  EXPECT_FALSE(line.isEmpty());
  Trace third;
  third = opened(bytes);
  std::vector<Trace> many;
  many.push_back(std::move(third));
  many.push_back(opened(bytes));
  many.insert(many.begin(), opened(bytes));
  for (const Trace& trace : many) EXPECT_EQ(json_of(trace), json);
}

TEST(Trace, TwoThreadsReadTheSame) {
  std::mt19937 random(6);
  std::vector<std::string> files = {rich_trace(ByteOrder::little).build(),
                                    rich_trace(ByteOrder::big).build()};
  for (int i = 0; i != 20; ++i) files.push_back(RandomTree(random).bytes());
  for (const std::string& bytes : files) {
    const Trace trace = opened(bytes);
    // Everything that is const, the shape's first question among it.
    const auto everything = [&] {
      std::string all = text_of(trace) + json_of(trace);
      for (NodeId id = 0; id != trace.node_count(); ++id) {
        all += std::to_string(trace.depth(id)) + ' ' + std::to_string(trace.last(id)) + ' ' +
               std::to_string(trace.next_sibling(id)) + '\n';
        const Node::Base node = trace.node(id);
        if (const auto call = node.begin_as<Checkpoint::FunctionCall>()) {
          for (const auto& value : call->args()) all += value.to_string(true).toStdString();
        }
      }
      return all;
    };
    std::string results[2];
    std::thread one([&] { results[0] = everything(); });
    std::thread two([&] { results[1] = everything(); });
    one.join();
    two.join();
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[0], everything());
    EXPECT_FALSE(results[0].empty());
  }
}

}  // namespace
}  // namespace CT::Test
