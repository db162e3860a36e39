// SPDX-License-Identifier: MIT
#include "ctredact/ct_rewriter.h"

#include "codetrace/model/ct_types.h"
#include "ctredact/ct_learner.h"

namespace CT::Redact {

using Checkpoint::Type;

Rewriter::Rewriter(const Parts& parts)
    : trace_(parts.trace),
      rules_(parts.rules),
      secrets_(parts.secrets),
      texts_(parts.texts),
      body_(parts.body),
      tally_(parts.tally),
      writer_(parts.writer),
      strict_(parts.strict),
      mask_(parts.masks, parts.secrets.set()),
      nodes_(parts.trace) {}

void Rewriter::begin(const CheckpointView& view, Type type, const CommonParts& common) {
  const std::optional<NodeId> node = nodes_.begun_at(view.offset());
  node_ = node ? *node : Tally::no_node;
  is_write_ = type == Type::SAPI_WRITE_START;
  Write::Common made;
  if (common.has_timestamp) made.timestamp = {common.seconds, common.nanoseconds};
  if (common.has_memory) made.memory = common.memory;
  if (common.has_location) {
    made.location = {text_of(common.file, Place::path), common.line};
  }
  writer_.begin(type, made);
  // A record that has to have a payload, of a type without fields: any byte will do.
  const bool is_empty = !common.has_timestamp && !common.has_memory && !common.has_location;
  if (type == Type::SAPI_FLUSH && is_empty) {
    constexpr unsigned char zero = 0;
    writer_.raw({&zero, 1});
  }
}

void Rewriter::end() {
  const std::optional<Write::Reference> made = writer_.end();
  is_written_ = made.has_value();
  if (!is_written_) return tally_.forget();
  tally_.commit();
  if (is_write_) ++writes_;
  if (node_ == Tally::no_node || nodes_.has_place(node_)) return;
  const std::optional<NodeId> begun = node_;
  nodes_.set_place(*begun, static_cast<std::uint32_t>(*made - writer_.options().orig_data));
}

void Rewriter::unknown(std::uint8_t type) {
  // Kept: readers say that they do not know it, as before; what it held is gone.
  const std::uint32_t word = type;
  unsigned char bytes[Format::header_word_size] = {};
  bytes[0] = static_cast<unsigned char>(writer_.options().big_endian ? word << 3 : word);
  is_written_ = writer_.copy(bytes).has_value();
}

void Rewriter::text_reference(std::uint64_t reference) {
  writer_.reference(text_of(reference, place_));
}

void Rewriter::callee(const Callee& callee) {
  if (callee.number >= functions_.size()) functions_.resize(callee.number + 1, 0);
  Write::Reference& made = functions_[callee.number];
  if (made == 0) {
    Write::FunctionInfo info;
    info.type = callee.type;
    info.name = text_of(callee.name, Place::function_name);
    info.class_entry = class_of(callee.class_entry);
    info.flags = callee.flags;
    info.file = text_of(callee.file, Place::path);
    info.line = callee.line;
    made = writer_.new_function(info);
  }
  writer_.reference(made);
}

Write::Reference Rewriter::class_of(std::uint64_t reference) {
  if (reference == 0) return 0;
  Recent& recent = recent_classes_[recent_slot(reference)];
  if (recent.before == reference) return recent.now;
  const auto known = classes_.find(reference);
  if (known != classes_.end()) {
    recent = {reference, known->second};
    return recent.now;
  }
  ClassParts parts;
  if (!read_class(trace_.file(), reference, parts)) return 0;
  Write::ClassInfo info;
  info.type = parts.type;
  info.name = text_of(parts.name, Place::class_name);
  info.flags = parts.flags;
  info.file = text_of(parts.file, Place::path);
  info.line = parts.line;
  return classes_.emplace(reference, writer_.new_class_entry(info)).first->second;
}

// An end that names no node names none in the copy either.
void Rewriter::begun_by(std::uint64_t reference) {
  const Section& data = trace_.file().data();
  const std::uint64_t offset = reference - data.origin();
  std::optional<NodeId> node;
  if (reference != 0 && offset < data.size()) node = nodes_.find(offset);
  if (!node) return writer_.reference(0);
  node_ = *node;
  writer_.reference(writer_.options().orig_data + nodes_.place(*node));
}

void Rewriter::plain(Checkpoint::ValueType type) {
  switch (type) {
    case Checkpoint::ValueType::null: return writer_.null();
    case Checkpoint::ValueType::false_: return writer_.boolean(false);
    case Checkpoint::ValueType::true_: return writer_.boolean(true);
    default: return writer_.undef();
  }
}

void Rewriter::integer(std::int64_t number, const Slot& slot) {
  RuleId rule = rule_of_integer(rules_, number, slot);
  if (rule == no_rule) {
    const std::uint32_t secret = secrets_.set().find_number(number);
    if (secret != no_secret) rule = secrets_.set().rule(secret);
  }
  if (rule == no_rule) return writer_.integer(number);
  const std::string digits = std::to_string(number);
  writer_.string(masked_whole(digits, rule, false));
}

void Rewriter::text(const Checkpoint::String& text, const Slot& slot) {
  if (text.is_cut_marker()) return writer_.string(text.view());
  const RuleId rule = strict_ != no_rule ? strict_ : slot.rule;
  const bool is_whole = rule != no_rule;
  const std::string_view now = is_whole ? masked_whole(text.view(), rule, text.is_cut())
                                        : masked(text.view(), text.is_cut());
  writer_.string(now, original_size(text, now, is_whole));
}

void Rewriter::object(std::uint64_t class_entry, std::uint32_t handle) {
  writer_.object(class_of(class_entry), handle);
}

void Rewriter::resource(std::uint64_t type_name, std::int64_t handle) {
  writer_.resource(text_of(type_name, Place::resource_type), handle);
}

}  // namespace CT::Redact
