// SPDX-License-Identifier: MIT
//
// Folds: sibling nodes of one name as one line, with their sums. Children of a single node are
// folded as far as they follow each other, so that the order in which things happened stays. What
// several folded nodes have called is put together by name, whatever the order: 214 times
// render() with a query() each are one render() × 214 over one query() × 214. So every node is in
// one fold, and figures add up: what a fold took is its own time and that of the folds under it.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_node_set.h"
#include "tools/cttool/ct_names.h"

namespace CT::Tool {

// Nodes of one name; the folder that made it knows those between the first and the last. The first
// is a name for the fold as well: no other has it.
struct Fold {
  NodeId first = Storage::no_node;
  NodeId last = Storage::no_node;
  std::int32_t count = 0;
};

// What the members of a fold come to.
struct FoldSums {
  std::int64_t nodes = 0;  // the members and all nodes that are looked at under them
  std::int64_t total_ns = 0;
  std::int64_t own_ns = 0;
  std::int64_t memory_delta = 0;  // of the members that have one
  bool has_delta = false;         // some member has
  NodeId slowest = Storage::no_node;
};

enum class FoldBy : std::uint8_t {
  runs,  // siblings that follow each other
  all,   // all siblings
  none,  // each node is a fold of its own
};

class Folder {
 public:
  // Only nodes in `visible` are looked at; the children of others move up. Borrows all three; the
  // set is numbered. Takes four bytes a node.
  Folder(const Trace& trace, const Measures& measures, const NodeSet& visible, FoldBy by);

  // Appends the folds of the outermost nodes of a scope, or of the children of a fold, in the order
  // of their first members. In time linear in how many nodes those are, and in those that move up.
  void add_outermost(const Scope& scope, std::vector<Fold>& folds);
  void add_children(const Fold& fold, std::vector<Fold>& folds);

  [[nodiscard]] FoldSums sums(const Fold& fold) const;

  // Calls `visit` with each member, in order.
  template <class Visit>
  void for_each_member(const Fold& fold, const Visit& visit) const {
    NodeId id = fold.first;
    visit(id);
    while (id != fold.last) visit(id = next_[static_cast<std::size_t>(id)]);
  }

 private:
  using Name = std::int32_t;
  struct Slot {
    std::uint32_t pass = 0;   // in which it was filled
    std::uint32_t place = 0;  // of the fold of this name
  };

  void begin(bool is_merged, const std::vector<Fold>& folds);
  void add_range(NodeId first, NodeId last, std::vector<Fold>& folds);
  void add_node(NodeId id, std::vector<Fold>& folds);
  void append(Fold& fold, NodeId id);
  [[nodiscard]] Name name_of(NodeId id);
  [[nodiscard]] Name number_of(const std::string& name);

  const Trace& trace_;
  const Measures& measures_;
  const NodeSet& visible_;
  FoldBy by_;
  std::vector<NodeId> next_;  // of a member: the next one of its fold
  std::vector<Name> of_functions_;
  std::unordered_map<std::string, Name> names_;
  std::vector<Slot> slots_;  // by name
  std::uint32_t pass_ = 0;   // one for each begin()
  bool is_merged_ = false;
  std::size_t first_ = 0;  // of the folds of this pass
  Name latest_ = -1;       // name of the latest one
};

}  // namespace CT::Tool
