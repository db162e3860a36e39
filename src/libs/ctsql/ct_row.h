// SPDX-License-Identifier: MIT
//
// The row that a cursor stands on, as the columns of a table see it, and the place where they put
// their values. A row is known by a number: that of a node, a function, a class and so on.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_node_text.h"
#include "codetrace/render/ct_plain_json.h"
#include "codetrace/render/ct_writer.h"
#include "ctsql/ct_cells.h"
#include "ctsql/ct_shape_walk.h"
#include "ctsql/ct_trace_data.h"

namespace CT::Sql {

class Row {
 public:
  // Borrows: the data.
  explicit Row(TraceData& data) : data_(data), reader_(data.trace().storage()) {}
  // For whoever goes through all nodes in their order. Borrows: the shape, which stands on the node
  // that this row is of.
  Row(TraceData& data, const ShapeWalk& shape) : Row(data) { shape_ = &shape; }

  // Stands on the row of this number from now on.
  void place(std::int32_t number) {
    number_ = number;
    is_read_ = false;
  }
  // The next column goes there.
  void put_into(Cells& cells) { cells_ = &cells; }

  [[nodiscard]] TraceData& data() { return data_; }
  [[nodiscard]] const Trace& trace() const { return data_.trace(); }
  [[nodiscard]] std::int32_t number() const { return number_; }
  // Requires, here and below: a row that is a node.
  [[nodiscard]] const Measure& measure() const { return data_.measures()[number_]; }
  [[nodiscard]] OwnMeasure own() const { return own_of(trace(), data_.measures(), number_); }
  // Decoded once a row, and not before somebody asks.
  [[nodiscard]] const Node::Base& node() {
    if (!is_read_) node_ = &reader_.read(number_);
    is_read_ = true;
    return *node_;
  }
  [[nodiscard]] std::uint32_t depth() const {
    return shape_ != nullptr ? shape_->depth() : trace().depth(number_);
  }
  [[nodiscard]] NodeId last() const {
    return shape_ != nullptr ? shape_->last() : trace().last(number_);
  }
  // Of a call.
  [[nodiscard]] const Checkpoint::Function& function() const {
    return trace().functions()[static_cast<std::size_t>(measure().function)];
  }

  void null() { cells_->null(); }
  void integer(std::int64_t value) { cells_->integer(value); }
  // What SQLite has no whole number for is the nearest real one.
  void unsigned_integer(std::uint64_t value);
  // Plain ASCII that lives for ever; an empty one is NULL.
  void word(std::string_view text);
  // UTF-8 that lives as long as the data.
  void kept_text(std::string_view text) { cells_->kept_text(text); }
  // What `write(Writer&)` writes, which is UTF-8.
  template <class Write>
  void text(const Write& write) {
    text_.clear();
    write(static_cast<Writer&>(text_));
    cells_->text(text_.view());
  }
  // A text of the trace, with the cut marker if it was cut; NULL if it is absent.
  void stored_text(const Checkpoint::String& stored);
  // The same; NULL also if it is empty, as the name of a file is that is not known.
  void stored_name(const Checkpoint::String& stored) {
    stored.is_empty() ? null() : stored_text(stored);
  }
  // The name of a function as other rows have it.
  void function_name(std::int32_t function);
  void class_name(std::int32_t function);

  // Plain JSON: of a value, and of all values that `values` has, as an array.
  void json(const Checkpoint::ValueRef& value);
  void json_array(const Checkpoint::Values& values);

  [[nodiscard]] Checkpoint::ValueTape& tape() { return tape_; }
  [[nodiscard]] Node::TextRoom& text_room() { return text_room_; }

 private:
  TraceData& data_;
  Cells* cells_ = nullptr;
  std::int32_t number_ = 0;
  bool is_read_ = false;
  NodeReader reader_;
  const Node::Base* node_ = nullptr;
  const ShapeWalk* shape_ = nullptr;
  MemoryWriter text_;
  Checkpoint::PlainJsonWriter json_;
  Checkpoint::ValueTape tape_;
  Node::TextRoom text_room_;
};

}  // namespace CT::Sql
