// SPDX-License-Identifier: MIT
#include "ctredact/ct_record_walk.h"

#include <algorithm>

namespace CT::Redact {

namespace {

constexpr std::size_t most_facts = 8;

bool is_call(Checkpoint::Type type) {
  return type == Checkpoint::Type::FUNCTION_CALL || type == Checkpoint::Type::METHOD_CALL;
}

// Where the texts of a record's fields are.
Place place_of(Checkpoint::Type type) {
  switch (type) {
    case Checkpoint::Type::INCLUDE_CALL: return Place::include;
    case Checkpoint::Type::SAPI_WRITE_START: return Place::output;
    case Checkpoint::Type::SAPI_HEADER: return Place::header;
    case Checkpoint::Type::SAPI_SEND_HEADERS: return Place::status;
    case Checkpoint::Type::SCRIPT_ERROR: return Place::error;
    case Checkpoint::Type::USER_EVENT: return Place::event;
    case Checkpoint::Type::FUNCTION_CALL: return Place::argument;
    case Checkpoint::Type::METHOD_CALL: return Place::object;
    case Checkpoint::Type::FUNCTION_RETURN: return Place::result;
    case Checkpoint::Type::FUNCTION_EXCEPTION:
    case Checkpoint::Type::INCLUDE_EXCEPTION: return Place::exception;
    default: return Place::request;
  }
}

}  // namespace

CommonParts read_common(const CheckpointView& view, Cursor& cursor) {
  CommonParts common;
  if (view.has_timestamp()) {
    common.seconds = cursor.u64();
    common.nanoseconds = cursor.u32();
    common.has_timestamp = cursor.ok();
  }
  if (view.has_memory()) {
    common.memory = cursor.u64();
    common.has_memory = cursor.ok();
  }
  if (view.has_location()) {
    common.file = cursor.u64();
    common.line = cursor.u32();
    common.has_location = cursor.ok();
  }
  return common;
}

void RecordWalk::record(const CheckpointView& view) {
  const Type type = Checkpoint::type_of_code(view.type());
  if (type == Type::INVALID || type == Type::CRASH) return handler_.unknown(view.type());
  const Checkpoint::TypeInfo& info = Checkpoint::type_info(type);
  if (view.size() == 0 && info.needs_payload) return;
  Cursor cursor = view.cursor();
  const CommonParts common = read_common(view, cursor);
  callee_ = nullptr;
  offset_ = view.offset();
  Cursor ahead = cursor;
  const std::uint64_t first = ahead.u64();
  if (is_call(type)) {
    callee_ = ahead.ok() ? callees_.find(first) : nullptr;
    if (callee_ == nullptr) return;
  } else if (info.role == Checkpoint::Role::span_end && !ahead.ok()) {
    return;
  }
  begun_by_ = first;
  handler_.begin(view, type, common);
  fields(type, cursor);
  handler_.end();
}

void RecordWalk::fields(Type type, Cursor& cursor) {
  handler_.enter(place_of(type));
  const auto& layout = Checkpoint::type_info(type).layout;
  for (std::size_t i = 0; i != layout.size(); ++i) {
    const bool is_first = i == 0;
    if (layout[i] == Format::Field::reference && is_first && is_call(type)) {
      cursor.u64();
      handler_.callee(*callee_);
    } else if (layout[i] == Format::Field::reference && is_first &&
               Checkpoint::type_info(type).role == Checkpoint::Role::span_end) {
      handler_.begun_by(cursor.u64());
    } else {
      field(layout[i], type, cursor);
    }
  }
}

void RecordWalk::field(Format::Field field, Type type, Cursor& cursor) {
  switch (field) {
    case Format::Field::none: break;
    case Format::Field::reference: handler_.text_reference(cursor.u64()); break;
    case Format::Field::u32: handler_.number(cursor.u32()); break;
    case Format::Field::cut_text: handler_.output(Checkpoint::get_cut_str(cursor)); break;
    case Format::Field::inline_text:
      handler_.inline_text(Checkpoint::get_inline_str(cursor));
      break;
    case Format::Field::value:
      value(cursor, type == Type::FUNCTION_RETURN ? rule_of_result(begun_by_) : no_rule);
      break;
    case Format::Field::arguments:
      handler_.enter(Place::argument);
      arguments(cursor);
      break;
    case Format::Field::header_line: {
      const std::uint8_t operation = cursor.u8();
      const bool has_line = cursor.ok() && operation < Format::first_operation_without_line;
      handler_.header(operation, has_line ? Checkpoint::get_cut_str(cursor) : Checkpoint::String());
      break;
    }
  }
}

void RecordWalk::value(Cursor& cursor, RuleId rule) {
  using Shown = ValueWalk<RecordHandler>::Shown;
  if (values_.walk(cursor, rule, nullptr) == Shown::nothing) {
    handler_.plain(Checkpoint::ValueType::undef);
  }
}

void RecordWalk::arguments(Cursor& cursor) {
  const std::uint32_t count = cursor.u32();
  facts_.clear();
  const bool has_rules = !callee_->rules.empty();
  for (std::uint32_t i = 0; i != count && cursor.ok() && cursor.left() != 0; ++i) {
    const CallRule* keyed = nullptr;
    RuleId rule = no_rule;
    if (has_rules) {
      if (facts_.size() < most_facts) note_fact(cursor);
      rule = rule_of_argument(i, keyed);
    }
    if (values_.walk(cursor, rule, keyed) != ValueWalk<RecordHandler>::Shown::whole) break;
  }
  if (has_rules && learns_results_) note_result();
}

void RecordWalk::note_fact(const Cursor& cursor) {
  Cursor ahead = cursor;
  Fact fact;
  const auto type = Checkpoint::value_type_of_code(ahead.u8());
  if (type == Checkpoint::ValueType::string) fact.text = Checkpoint::get_cut_str(ahead).view();
  if (type == Checkpoint::ValueType::long_) {
    fact.number = ahead.i64();
    fact.has_number = ahead.ok();
  }
  facts_.push_back(fact);
}

// Whether what a rule asks for is so, as far as the arguments are known.
bool RecordWalk::holds(const CallRule& rule) const {
  constexpr std::size_t longest_name = 128;
  if (rule.named != CallRule::none) {
    if (rule.named >= facts_.size()) return false;
    const std::string_view name = facts_[rule.named].text;
    return name.size() <= longest_name && rules_.keys().find(name) != no_rule;
  }
  if (rule.when != CallRule::none) {
    if (rule.when >= facts_.size() || !facts_[rule.when].has_number) return false;
    const std::int64_t number = facts_[rule.when].number;
    return std::find(rule.numbers.begin(), rule.numbers.end(), number) != rule.numbers.end();
  }
  return true;
}

RuleId RecordWalk::rule_of_argument(std::uint32_t number, const CallRule*& keyed) const {
  for (const CallRule& rule : callee_->rules) {
    if (rule.place != CallRule::all && rule.place != number) continue;
    if (!holds(rule)) continue;
    if (rule.has_keys) {
      keyed = &rule;
    } else {
      return rule.rule;
    }
  }
  return no_rule;
}

void RecordWalk::note_result() {
  for (const CallRule& rule : callee_->rules) {
    if (rule.place != CallRule::result || !holds(rule)) continue;
    results_.emplace_back(offset_, rule.rule);
    return;
  }
}

RuleId RecordWalk::rule_of_result(std::uint64_t reference) const {
  if (results_.empty() || reference == 0) return no_rule;
  const std::uint64_t offset = reference - file_.data().origin();
  if (offset >= file_.data().size()) return no_rule;
  const auto found =
      std::lower_bound(results_.begin(), results_.end(), offset,
                       [](const auto& row, std::uint64_t wanted) { return row.first < wanted; });
  return found != results_.end() && found->first == offset ? found->second : no_rule;
}

}  // namespace CT::Redact
