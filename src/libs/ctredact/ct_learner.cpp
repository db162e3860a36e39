// SPDX-License-Identifier: MIT
#include "ctredact/ct_learner.h"

namespace CT::Redact {

Learner::Learner(const File& file, const Rules& rules, TextSecrets& secrets, AddDataTexts& texts)
    : file_(file),
      rules_(rules),
      secrets_(secrets),
      texts_(texts),
      body_([this](std::string_view window, std::vector<Range>&) {
        secrets_.learn_text(window, true);
      }) {}

void Learner::finish() {
  body_.finish();
  texts_.finish();
  for (const AddDataTexts::Text& text : texts_.texts()) {
    secrets_.learn_text(texts_.view(text), false);
  }
}

void Learner::begin(const CheckpointView&, Checkpoint::Type, const CommonParts& common) {
  if (common.has_location) texts_.note(common.file);
}

void Learner::note_class(std::uint64_t reference) {
  if (reference == 0 || reference == last_class_) return;
  last_class_ = reference;
  ClassParts parts;
  if (!read_class(file_, reference, parts)) return;
  texts_.note(parts.name, parts.type != Format::user_defined);
  texts_.note(parts.file);
}

void Learner::callee(const Callee& callee) {
  if (callee.number < callees_) return;
  callees_ = callee.number + 1;
  texts_.note(callee.name, callee.type != Format::user_defined);
  texts_.note(callee.file);
  note_class(callee.class_entry);
}

void Learner::inline_text(const Checkpoint::String& text) {
  secrets_.learn_text(text.view(), false);
}

void Learner::header(std::uint8_t, const Checkpoint::String& line) {
  secrets_.learn_header(line.view(), line.is_cut());
}

RuleId rule_of_integer(const Rules& rules, std::int64_t number, const Slot& slot) {
  if (slot.rule != no_rule && !slot.is_inherited) return slot.rule;
  return is_card(number) ? rules.shape(Shape::card) : no_rule;
}

void Learner::integer(std::int64_t number, const Slot& slot) {
  const RuleId rule = rule_of_integer(rules_, number, slot);
  if (rule != no_rule) secrets_.learn_number(number, rule);
}

void Learner::text(const Checkpoint::String& text, const Slot& slot) {
  if (text.is_cut_marker()) return;
  if (slot.rule == no_rule) return secrets_.learn_text(text.view(), text.is_cut());
  secrets_.learn_value(text.view(), slot.rule, text.is_cut(), slot.is_inherited);
}

void Learner::object(std::uint64_t class_entry, std::uint32_t) { note_class(class_entry); }

}  // namespace CT::Redact
