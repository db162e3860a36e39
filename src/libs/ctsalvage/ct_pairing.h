// SPDX-License-Identifier: MIT
//
// Which end closes which begin. The reader believes every end, and an end that is wrong costs all
// that follows it; here each is held against what is open and against the ends still to come:
//
// - an end closes the begin at its place, if that is open, and if nothing inside of it still ends
//   later by itself;
// - an end whose begin lies where checkpoints are lost gets a begin that is invented;
// - an end that leads astray closes the innermost call, if nothing else ever does.
//
// All others are dropped. Nodes that never end stay open, which a reader takes.
#pragma once

#include <optional>
#include <vector>

#include "ctsalvage/ct_selection.h"

namespace CT::Salvage {

// A begin that is lost, at the place that its ends tell.
struct LostBegin {
  std::int64_t place = 0;
  Checkpoint::Type end = Checkpoint::Type::INVALID;  // of the first that names it
  std::uint64_t told_at = 0;                         // the offset of that
  bool is_used = false;                              // an end closes it
};

// What all ends of the selected checkpoints say.
class Ends {
 public:
  // `base`: the writer's address of place 0.
  Ends(const unsigned char* file, Order order, std::uint64_t base, const Selection& selection);

  // The number of the last end that names a place, counted from 1; 0 if none does.
  [[nodiscard]] std::uint32_t last(std::int64_t place) const;
  [[nodiscard]] std::int64_t place(const Frame& end) const {
    return static_cast<std::int64_t>(order_.u64(end.reference()) - base_);
  }
  // By place; only those of which no checkpoint is selected.
  [[nodiscard]] std::vector<LostBegin>& lost() { return lost_; }
  // Whether a selected checkpoint covers a place.
  [[nodiscard]] bool is_kept(std::int64_t place) const;

 private:
  struct Last {
    std::int64_t place;
    std::uint32_t number;
  };

  Order order_;
  std::uint64_t base_;
  const std::vector<Piece>& runs_;
  std::vector<Last> lasts_;  // by place, each once
  std::vector<LostBegin> lost_;
};

// The nodes that are open, as checkpoints come by their places.
class OpenStack {
 public:
  enum class Decision : std::uint8_t { closes, led_back, again, astray };
  struct Node {
    std::int64_t place = 0;
    std::uint64_t written_at = 0;  // of the caller
    Checkpoint::Type begin = Checkpoint::Type::INVALID;
    LostBegin* lost = nullptr;
  };

  // Borrows: the ends.
  explicit OpenStack(const Ends& ends) : ends_(ends) {}

  void open(const Node& node) { nodes_.push_back(node); }
  void clear() { nodes_.clear(); }
  // The next end. If it closes something, closed() tells what.
  Decision close(const Frame& end);
  [[nodiscard]] const Node& closed() const { return closed_; }

 private:
  [[nodiscard]] std::size_t find(std::int64_t place) const;
  [[nodiscard]] bool fits(const Node& node, const Frame& end) const;
  Decision take(std::size_t node, Decision decision);

  const Ends& ends_;
  std::vector<Node> nodes_;  // places rise
  Node closed_;
  std::uint32_t number_ = 0;
};

}  // namespace CT::Salvage
