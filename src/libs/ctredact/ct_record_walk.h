// SPDX-License-Identifier: MIT
//
// The records of a trace, field by field, as far as they are whole, shown to a handler together
// with what the rules say of each value. Records that take no part in the tree for want of a
// function, a reference or a payload are not shown, nor are bytes that no reader reads.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "codetrace/model/ct_types.h"
#include "codetrace/model/ct_view.h"
#include "ctredact/ct_callee.h"
#include "ctredact/ct_rules.h"
#include "ctredact/ct_tally.h"
#include "ctredact/ct_value_walk.h"

namespace CT::Redact {

// The common fields that are whole.
struct CommonParts {
  bool has_timestamp = false;
  bool has_memory = false;
  bool has_location = false;
  std::uint64_t seconds = 0;
  std::uint32_t nanoseconds = 0;
  std::uint64_t memory = 0;
  std::uint64_t file = 0;  // a reference
  std::uint32_t line = 0;
};

class RecordHandler {
 public:
  RecordHandler() = default;
  RecordHandler(const RecordHandler&) = delete;
  RecordHandler& operator=(const RecordHandler&) = delete;

  virtual void begin(const CheckpointView& view, Checkpoint::Type type,
                     const CommonParts& common) = 0;
  virtual void end() = 0;
  // A record of a type that nobody knows.
  virtual void unknown(std::uint8_t type) = 0;

  // Fields. What follows is in this kind of place.
  virtual void enter(Place place) = 0;
  virtual void text_reference(std::uint64_t reference) = 0;
  virtual void callee(const Callee& callee) = 0;
  virtual void begun_by(std::uint64_t reference) = 0;
  virtual void number(std::uint32_t number) = 0;
  virtual void output(const Checkpoint::String& text) = 0;
  virtual void inline_text(const Checkpoint::String& text) = 0;
  virtual void header(std::uint8_t operation, const Checkpoint::String& line) = 0;

  // Values.
  virtual void plain(Checkpoint::ValueType type) = 0;
  virtual void integer(std::int64_t number, const Slot& slot) = 0;
  virtual void real(double number) = 0;
  virtual void text(const Checkpoint::String& text, const Slot& slot) = 0;
  virtual void object(std::uint64_t class_entry, std::uint32_t handle) = 0;
  virtual void resource(std::uint64_t type_name, std::int64_t handle) = 0;
  virtual void begin_array() = 0;
  virtual void end_array() = 0;

 protected:
  ~RecordHandler() = default;
};

// Calls of which the result is secret, by the offset of their record; rising.
using SecretResults = std::vector<std::pair<std::uint32_t, RuleId>>;

class RecordWalk {
 public:
  // Borrows all of them.
  RecordWalk(const File& file, const Rules& rules, Callees& callees, SecretResults& results,
             RecordHandler& handler)
      : file_(file),
        callees_(callees),
        results_(results),
        handler_(handler),
        rules_(rules),
        values_(rules, handler) {}

  // Shows one record.
  void record(const CheckpointView& view);
  // Notes calls of which the result is secret: the first time that a trace is walked through.
  void learn_results(bool on) { learns_results_ = on; }

 private:
  using Type = Checkpoint::Type;

  // An argument as far as rules ask for it.
  struct Fact {
    std::string_view text;
    bool has_number = false;
    std::int64_t number = 0;
  };

  void fields(Type type, Cursor& cursor);
  void field(Format::Field field, Type type, Cursor& cursor);
  void value(Cursor& cursor, RuleId rule);
  void arguments(Cursor& cursor);
  void note_fact(const Cursor& cursor);
  [[nodiscard]] bool holds(const CallRule& rule) const;
  [[nodiscard]] RuleId rule_of_argument(std::uint32_t number, const CallRule*& keyed) const;
  void note_result();
  [[nodiscard]] RuleId rule_of_result(std::uint64_t reference) const;

  const File& file_;
  Callees& callees_;
  SecretResults& results_;
  RecordHandler& handler_;
  const Rules& rules_;
  ValueWalk<RecordHandler> values_;
  bool learns_results_ = false;

  // Of the record under way.
  std::uint32_t offset_ = 0;
  const Callee* callee_ = nullptr;
  std::uint64_t begun_by_ = 0;
  std::vector<Fact> facts_;
};

// The common fields of a record; the cursor is led behind them.
CommonParts read_common(const CheckpointView& view, Cursor& cursor);

}  // namespace CT::Redact
