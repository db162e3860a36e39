// SPDX-License-Identifier: MIT
//
// The nodes of a report as columns: a stream of numbers for each thing that a node has, in the
// order of the nodes. Names are numbers of functions and of labels; both, and the files, are
// columns of texts.
#pragma once

#include <cstdint>
#include <vector>

#include "ctexport/ct_export_source.h"
#include "ctexport/ct_span_walk.h"
#include "ctreport/ct_block.h"
#include "ctreport/ct_column.h"
#include "ctreport/ct_function_sums.h"
#include "ctreport/ct_text_numbers.h"
#include "ctreport/ct_value_order.h"

namespace CT::Report {

// What a node's flags say; the lowest two bits are its outcome.
enum Flag : std::uint8_t {
  ended = 1,
  threw = 2,
  open = 3,
  has_memory = 4,
  has_delta = 8,
  untimed = 16,
  end_untimed = 32,
  moved = 64,
  has_values = 128,
};

// A sink of SpanWalk.
class Columns {
 public:
  // Borrows: what the source borrows.
  explicit Columns(const Export::Source& source);

  void begin(NodeId id, const Measure& measure, std::uint32_t depth);
  void end(NodeId id, const Measure& measure, const Export::OwnFigures& figures);
  void point(NodeId id, const Measure& measure, std::uint32_t depth);

  // The blocks in the order of the page. Nothing may be put behind them.
  [[nodiscard]] std::vector<Block> finish();
  [[nodiscard]] std::uint64_t node_count() const { return count_; }
  [[nodiscard]] const ValueOrder& values() const { return values_; }

 private:
  void put(NodeId id, const Measure& measure);
  void put_place(const Checkpoint::Base& record);
  void put_memory(const Measure& measure);
  // The number in the column of names.
  std::uint64_t name_of(const Node::Base& node, const Measure& measure);
  std::uint64_t label_of(const Node::Base& node);
  std::uint64_t label(std::string_view before, const Checkpoint::String& text);

  const Export::Source& source_;
  NodeReader reader_;
  FunctionSums sums_;
  ValueOrder values_;

  Column labels_text_;
  Column files_text_;
  TextNumbers labels_;
  TextNumbers files_;
  Column id_;
  Column kind_;
  Column flags_;
  Column depth_;
  Column name_;
  Column start_;
  Column total_;
  Column memory_;
  Column growth_;
  Column file_;
  Column line_;

  // Of the node before, as far as there is one.
  std::uint64_t id_before_ = ~std::uint64_t{0};
  std::uint64_t depth_before_ = 0;
  std::uint64_t start_before_ = 0;
  std::uint64_t memory_before_ = 0;
  std::uint64_t line_before_ = 0;
  std::uint64_t spans_open_ = 0;  // of those in the report
  std::uint64_t count_ = 0;
};

// The flags of a node.
std::uint8_t flags_of(const Node::Base& node, const Measure& measure);
// The number of its kind: request, call, include, write, flush, header, send_headers, exit, error,
// event.
std::uint8_t kind_number(Node::Type type);

}  // namespace CT::Report
