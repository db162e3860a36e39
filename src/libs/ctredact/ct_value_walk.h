// SPDX-License-Identifier: MIT
//
// Values where they stand in a payload, shown one after the other to a handler together with the
// rule that makes each secret. Nothing is built and nothing recurses; what is not whole is shown as
// the format says: arrays end early, an innermost value is undef.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "codetrace/bytes/ct_cursor.h"
#include "codetrace/model/ct_format.h"
#include "codetrace/model/ct_value_types.h"
#include "codetrace/model/ct_view.h"
#include "ctredact/ct_rules.h"

namespace CT::Redact {

// What is known of the place of a value.
struct Slot {
  bool is_key = false;
  RuleId rule = no_rule;      // why it is secret, if it is
  bool is_inherited = false;  // because an array around it is
};

// Whether a text is the mark of what the tracer left out.
inline bool is_cut_mark(std::string_view text) { return text == Format::cut_marker; }

template <class Handler>
class ValueWalk {
 public:
  // Borrows both.
  ValueWalk(const Rules& rules, Handler& handler) : rules_(rules), handler_(handler) {}

  // What became of a value that was to be shown.
  enum class Shown : std::uint8_t {
    whole,
    in_part,  // an array that ends early
    nothing,  // no more than its code was there, if at all
  };

  // One value; its rule if it is secret, and a rule for what stands under some keys of it.
  Shown walk(Cursor& cursor, RuleId rule, const CallRule* keyed) {
    open_.clear();
    keyed_ = keyed;
    outer_rule_ = rule;
    for (;;) {
      while (!open_.empty() && open_.back().left == 0 && !open_.back().has_key) end_array();
      const bool was_whole = one(cursor);
      if (!was_whole) {
        const Shown shown = open_.empty() ? Shown::nothing : Shown::in_part;
        close_all();
        return shown;
      }
      while (!open_.empty() && open_.back().left == 0 && !open_.back().has_key) end_array();
      if (open_.empty()) return Shown::whole;
    }
  }

 private:
  using Type = Checkpoint::ValueType;

  struct Array {
    std::uint32_t left;    // pairs of which the key is still to come
    bool has_key = false;  // the next value belongs to the key before it
    Slot slot;             // of the value that comes next
    RuleId inherited = no_rule;
  };

  [[nodiscard]] Slot next_slot() const {
    if (open_.empty()) return {false, outer_rule_, false};
    const Array& array = open_.back();
    return array.has_key ? array.slot : Slot{true, no_rule, false};
  }

  // Goes on behind a whole value in the innermost array.
  void passed(RuleId rule_of_key) {
    if (open_.empty()) return;
    Array& array = open_.back();
    if (array.has_key) {
      array.has_key = false;
      return;
    }
    --array.left;
    array.has_key = true;
    const bool is_own = rule_of_key != no_rule;
    array.slot = {false, is_own ? rule_of_key : array.inherited, !is_own};
  }

  void end_array() {
    open_.pop_back();
    handler_.end_array();
    passed(no_rule);
  }

  void close_all() {
    while (!open_.empty()) {
      if (open_.back().has_key) handler_.plain(Type::undef);
      open_.pop_back();
      handler_.end_array();
      if (!open_.empty()) open_.back().has_key = !open_.back().has_key;
    }
  }

  [[nodiscard]] RuleId rule_of_number(std::int64_t key) const {
    if (keyed_ == nullptr || open_.size() != 1) return no_rule;
    const auto& numbers = keyed_->numbers;
    return std::find(numbers.begin(), numbers.end(), key) != numbers.end() ? keyed_->rule : no_rule;
  }

  bool one(Cursor& cursor) {
    const Slot slot = next_slot();
    const Type type = Checkpoint::value_type_of_code(cursor.u8());
    if (!cursor.ok()) return false;
    switch (type) {
      case Type::long_: return integer(cursor, slot);
      case Type::string: return text(cursor, slot);
      case Type::array: return array(cursor, slot);
      case Type::double_: {
        const double number = cursor.f64();
        if (!cursor.ok()) return false;
        handler_.real(number);
        break;
      }
      case Type::object: {
        const std::uint64_t reference = cursor.u64();
        const std::uint32_t handle = cursor.u32();
        if (!cursor.ok()) return false;
        handler_.object(reference, handle);
        break;
      }
      case Type::resource: {
        const std::uint64_t reference = cursor.u64();
        const std::int64_t handle = cursor.i64();
        if (!cursor.ok()) return false;
        handler_.resource(reference, handle);
        break;
      }
      default: handler_.plain(type); break;
    }
    passed(no_rule);
    return true;
  }

  bool integer(Cursor& cursor, const Slot& slot) {
    const std::int64_t number = cursor.i64();
    if (!cursor.ok()) return false;
    handler_.integer(number, slot);
    passed(slot.is_key ? rule_of_number(number) : no_rule);
    return true;
  }

  bool text(Cursor& cursor, const Slot& slot) {
    const Checkpoint::String text = Checkpoint::get_cut_str(cursor);
    if (!cursor.ok()) return false;
    handler_.text(text, slot);
    passed(slot.is_key ? rules_.keys().find(text.view()) : no_rule);
    return true;
  }

  bool array(Cursor& cursor, const Slot& slot) {
    const std::int32_t count = cursor.i32();
    if (!cursor.ok()) return false;
    handler_.begin_array();
    open_.push_back({count > 0 ? static_cast<std::uint32_t>(count) : 0, false, {}, slot.rule});
    return true;
  }

  const Rules& rules_;
  Handler& handler_;
  std::vector<Array> open_;
  const CallRule* keyed_ = nullptr;
  RuleId outer_rule_ = no_rule;
};

}  // namespace CT::Redact
