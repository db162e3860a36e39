// SPDX-License-Identifier: MIT
//
// The numbers of the rows that a search finds, one after the other.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "ctsql/ct_plan.h"
#include "ctsql/ct_table.h"

namespace CT::Sql {

class Walk {
 public:
  // Borrows both.
  Walk(const Table& table, TraceData& data) : table_(table), data_(data) {}

  void start(const Search& search);
  void next();
  [[nodiscard]] bool is_at_end() const { return is_at_end_; }
  // Requires: not at the end.
  [[nodiscard]] std::int32_t number() const { return number_; }

 private:
  void start_all();
  void start_list(std::span<const NodeId> list);
  void start_children();
  void start_functions();
  void start_named();
  void start_above();
  [[nodiscard]] bool step();
  [[nodiscard]] bool step_in_list();
  [[nodiscard]] bool is_row(NodeId id) const;

  // Where the numbers come from.
  enum class Source : std::uint8_t { range, list, children, functions };

  const Table& table_;
  TraceData& data_;
  Search search_;
  Source source_ = Source::range;
  std::int64_t next_ = 0;         // of a range, and the next child
  std::span<const NodeId> list_;  // what is left of it
  std::size_t function_ = 0;      // the next whose calls are the list
  std::vector<NodeId> made_;      // a list of its own
  std::int32_t number_ = 0;
  bool is_at_end_ = true;
};

}  // namespace CT::Sql
