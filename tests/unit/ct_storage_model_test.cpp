// SPDX-License-Identifier: MIT
//
// The storage held to a plain model of it, with a list of nodes, a stack and an index by address,
// on random sequences of records: nested as they should be, in any order, and any of them twice.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "codetrace/ct_storage.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::Type;

class Model {
 public:
  struct Entry {
    std::size_t begin;  // numbers of checkpoints
    std::size_t end;
    int parent;
    std::string name;
  };
  static constexpr std::size_t none = SIZE_MAX;

  // `start` is the checkpoint that an end refers to, `none` for nothing that is there.
  int add(std::size_t number, Type type, std::size_t start) {
    switch (type) {
      case Type::STARTUP: return add_startup(number);
      case Type::SHUTDOWN: return add_shutdown(number);
      case Type::FUNCTION_CALL: return open(number, type, "FUNCTION_CALL");
      case Type::INCLUDE_CALL: return open(number, type, "INCLUDE_CALL");
      case Type::SAPI_WRITE_START: return open(number, type, "SAPI_WRITE");
      case Type::FUNCTION_RETURN: return close(number, type, start, "FUNCTION_CALL");
      case Type::INCLUDE_RETURN: return close(number, type, start, "INCLUDE_CALL");
      case Type::SAPI_WRITE_END: return close(number, type, start, "SAPI_WRITE");
      default: return is_open(type) ? make(number, "leaf") : -1;
    }
  }

  std::vector<Entry> nodes;
  std::vector<std::string> messages;

 private:
  bool is_open(Type type) {
    if (!nodes.empty() && !stack_.empty()) return true;
    messages.push_back(fmt::format("0 {} checkpoint without STARTUP checkpoint", type_name(type)));
    return false;
  }

  int make(std::size_t number, const std::string& name) {
    nodes.push_back({number, none, stack_.empty() ? -1 : stack_.back(), name});
    return static_cast<int>(nodes.size()) - 1;
  }

  int add_startup(std::size_t number) {
    if (!nodes.empty() || !stack_.empty()) {
      messages.push_back("0 Duplicate STARTUP checkpoint");
      return -1;
    }
    stack_.push_back(make(number, "STARTUP"));
    return 0;
  }

  int open(std::size_t number, Type type, const std::string& name) {
    if (!is_open(type)) return -1;
    const int id = make(number, name);
    stack_.push_back(id);
    by_address_[number] = id;
    return id;
  }

  int add_shutdown(std::size_t number) {
    if (!is_open(Type::SHUTDOWN)) return -1;
    while (!stack_.empty() && stack_.back() != 0) stack_.pop_back();
    return end(0, number);
  }

  int close(std::size_t number, Type type, std::size_t start, const std::string& name) {
    if (!is_open(type)) return -1;
    const auto found = by_address_.find(start);
    if (found == by_address_.end()) {
      messages.push_back(fmt::format("0 No {} node", name));
      return -1;
    }
    const int id = found->second;
    const std::string& found_name = nodes[static_cast<std::size_t>(id)].name;
    if (type == Type::INCLUDE_RETURN && found_name != "INCLUDE_CALL") {
      messages.push_back("0 Expected INCLUDE_CALL node, but got " + found_name);
      return -1;
    }
    if (stack_.back() != id) {
      messages.push_back(
          fmt::format("1 {} node with ID {} is not the last node in the stack", name, id));
      while (!stack_.empty() && stack_.back() != id) stack_.pop_back();
      if (stack_.empty()) {
        messages.push_back("0 Nodes stack is corrupted");
        return -1;
      }
    }
    return end(id, number);
  }

  int end(int id, std::size_t number) {
    stack_.pop_back();
    nodes[static_cast<std::size_t>(id)].end = number;
    return id;
  }

  std::vector<int> stack_;
  std::map<std::size_t, int> by_address_;
};

// A trace of STARTUP, spans and leaves, ends of any of them, and SHUTDOWN.
class RandomTrace {
 public:
  explicit RandomTrace(std::mt19937& random) : random_(random) {
    const Ref function = trace_.function({.name = "f"});
    add(CheckpointDraft::startup());
    const std::size_t count = 5 + random_() % 20;
    std::vector<std::size_t> open;
    while (refs_.size() < count) {
      switch (random_() % 8) {
        case 0: open.push_back(add(CheckpointDraft::function_call(function))); break;
        case 1: open.push_back(add(CheckpointDraft::include_call(0))); break;
        case 2:
          open.push_back(add(CheckpointDraft::sapi_write_start(Fields().cut_string(""))));
          break;
        case 3: add(CheckpointDraft::script_exit()); break;
        default: add_end(open); break;
      }
    }
    add(CheckpointDraft::shutdown());
  }

  const TraceBuilder& builder() const { return trace_; }
  std::size_t size() const { return refs_.size(); }
  std::size_t start_of(std::size_t end) const { return starts_[end]; }

 private:
  std::size_t add(const CheckpointDraft& draft, std::size_t start = Model::none) {
    refs_.push_back(trace_.add(draft));
    starts_.push_back(start);
    return refs_.size() - 1;
  }

  // Mostly of the innermost open span; else of anything, or of nothing.
  void add_end(std::vector<std::size_t>& open) {
    std::size_t start = random_() % (refs_.size() + 1);
    if (!open.empty() && random_() % 4 != 0) {
      start = open.back();
      open.pop_back();
    }
    const Ref ref = start < refs_.size() ? refs_[start] : 0;
    if (start == refs_.size()) start = Model::none;
    switch (random_() % 3) {
      case 0: add(CheckpointDraft::function_return(ref), start); break;
      case 1: add(CheckpointDraft::include_return(ref), start); break;
      default: add(CheckpointDraft::sapi_write_end(ref), start); break;
    }
  }

  std::mt19937& random_;
  TraceBuilder trace_;
  std::vector<Ref> refs_;
  std::vector<std::size_t> starts_;
};

std::string described(std::size_t begin, std::size_t end, int parent) {
  return fmt::format("{}-{} under {}\n", begin, end, parent);
}

std::string tree_of(const Model& model) {
  std::string all;
  for (const Model::Entry& node : model.nodes) all += described(node.begin, node.end, node.parent);
  return all;
}

std::string tree_of(Storage& storage, const std::vector<std::uint32_t>& offsets) {
  const auto number_of = [&](const Node::Base::Record* record) {
    if (record == nullptr) return Model::none;
    const auto found = std::find(offsets.begin(), offsets.end(), record->offset());
    return static_cast<std::size_t>(found - offsets.begin());
  };
  std::string all;
  for (Storage::NodeId id = 0; id != storage.node_count(); ++id) {
    const auto node = storage.node(id);
    all += described(number_of(&node->begin()), number_of(node->end()), node->parent_id());
  }
  return all;
}

// Without the address in it, which the model does not know.
std::vector<std::string> without_addresses(std::vector<std::string> lines) {
  for (std::string& line : lines) line = line.substr(0, line.find(" found with address"));
  return lines;
}

// Hands the checkpoints of a random trace to both in the order that `next` tells.
template <class Next>
void hold_to_model(std::uint32_t seed, Next next) {
  std::mt19937 random(seed);
  for (int run = 0; run != 400; ++run) {
    const RandomTrace made(random);
    OpenTrace trace(made.builder());
    std::vector<std::shared_ptr<const Checkpoint::Base>> records;
    std::vector<std::uint32_t> offsets;
    for (CheckpointView view(trace.file()); view.step();) {
      records.push_back(Checkpoint::make_record(view, &trace.storage().entities()));
      offsets.push_back(view.offset());
    }
    ASSERT_EQ(records.size(), made.size());
    Model model;
    for (std::size_t step = 0; step != made.size(); ++step) {
      const std::size_t number = next(random, step, made.size());
      const Checkpoint::Base& record = *records[number];
      EXPECT_EQ(trace.storage().add_checkpoint(record),
                model.add(number, record.type(), made.start_of(number)));
    }
    ASSERT_EQ(tree_of(trace.storage(), offsets), tree_of(model)) << run;
    ASSERT_EQ(without_addresses(trace.findings()), model.messages) << run;
  }
}

TEST(StorageModel, RecordsInFileOrder) {
  hold_to_model(1, [](std::mt19937&, std::size_t step, std::size_t) { return step; });
}

TEST(StorageModel, StartupFirstAndAnyRecordsBehindIt) {
  hold_to_model(2, [](std::mt19937& random, std::size_t step, std::size_t size) {
    return step == 0 ? 0 : 1 + random() % (size - 2);
  });
}

TEST(StorageModel, FileOrderWithRecordsTwiceAndLeftOut) {
  hold_to_model(3, [](std::mt19937& random, std::size_t step, std::size_t size) {
    if (step == 0) return step;
    return std::min(size - 1, step + random() % 3 - (random() % 3 == 0 ? 1 : 0));
  });
}

}  // namespace
}  // namespace CT::Test
