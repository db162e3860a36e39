// SPDX-License-Identifier: MIT
//
// ValueTrace: a trace whose only checkpoint carries nothing but values, opened and stepped to, with
// a cursor on the first of them.
//
//   TraceBuilder trace(ByteOrder::big);
//   ValueTrace values(trace, value::integer(1));
//   const Checkpoint::KVal number = values.next();
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "codetrace/ct_file.h"
#include "codetrace/model/ct_value.h"
#include "open_trace.h"
#include "trace_builder.h"

namespace CT::Test {

// The pairs of an array, each kept on its own.
inline std::vector<std::pair<Checkpoint::KVal, Checkpoint::KVal>> pairs_of(
    const Checkpoint::KVal& array) {
  std::vector<std::pair<Checkpoint::KVal, Checkpoint::KVal>> pairs;
  for (const auto& [key, value] : array.elements()) {
    pairs.emplace_back(array.keep(key), array.keep(value));
  }
  return pairs;
}

class ValueTrace {
 public:
  // `trace` is the builder whose ADD DATA the values refer to, without checkpoints so far. Of the
  // payload the first `keep` bytes are kept.
  explicit ValueTrace(TraceBuilder trace, const Fields& values,
                      std::size_t keep = std::string::npos)
      : file_(QString()), view_(file_) {
    constexpr std::uint8_t user_event = 17;
    trace.add(CheckpointDraft::raw(user_event, values).keep(keep));
    const std::string bytes = trace.build();
    if (!file_.open(as_bytes(bytes), bytes.size()) || !view_.step()) {
      throw std::runtime_error("no trace");
    }
    cursor_ = view_.cursor();
  }

  ValueTrace(ByteOrder order, const Fields& values, std::size_t keep = std::string::npos)
      : ValueTrace(TraceBuilder(order), values, keep) {}

  ValueTrace(const ValueTrace&) = delete;
  ValueTrace& operator=(const ValueTrace&) = delete;

  const File& file() const { return file_; }
  const CheckpointView& view() const { return view_; }
  Cursor& cursor() { return cursor_; }
  Entities& entities() { return *entities_; }

  // Decodes the next value, with the table of classes or without one.
  Checkpoint::KVal next() { return {view_, cursor_, entities_.get()}; }
  Checkpoint::KVal next_alone() { return {view_, cursor_, nullptr}; }
  // The same on a tape, which is reset.
  Checkpoint::ValueRef next(Checkpoint::ValueTape& tape) {
    Cursor ahead = cursor_;
    Checkpoint::scan_values(ahead, 1, entities_.get());
    tape.reset(view_, entities_.get());
    return {tape, tape.decode(cursor_)};
  }

 private:
  File file_;
  CheckpointView view_;
  Cursor cursor_;
  std::shared_ptr<Entities> entities_ = Entities::make(file_);
};

}  // namespace CT::Test
