// SPDX-License-Identifier: MIT
//
// The first walk through a trace: which texts it refers to, and what is secret in all of it.
#pragma once

#include "ctredact/ct_add_data_texts.h"
#include "ctredact/ct_body_stream.h"
#include "ctredact/ct_record_walk.h"
#include "ctredact/ct_text_secrets.h"

namespace CT::Redact {

class Learner final : public RecordHandler {
 public:
  // Borrows all of them.
  Learner(const File& file, const Rules& rules, TextSecrets& secrets, AddDataTexts& texts);

  // The end of the walk: what ADD DATA and the output say.
  void finish();

  void begin(const CheckpointView& view, Checkpoint::Type type, const CommonParts& common) override;
  void end() override {}
  void unknown(std::uint8_t) override {}
  void enter(Place) override {}
  void text_reference(std::uint64_t reference) override { texts_.note(reference); }
  void callee(const Callee& callee) override;
  void begun_by(std::uint64_t) override {}
  void number(std::uint32_t) override {}
  void output(const Checkpoint::String& text) override { body_.add(text.view(), text.is_cut()); }
  void inline_text(const Checkpoint::String& text) override;
  void header(std::uint8_t operation, const Checkpoint::String& line) override;
  void plain(Checkpoint::ValueType) override {}
  void integer(std::int64_t number, const Slot& slot) override;
  void real(double) override {}
  void text(const Checkpoint::String& text, const Slot& slot) override;
  void object(std::uint64_t class_entry, std::uint32_t handle) override;
  void resource(std::uint64_t type_name, std::int64_t) override { texts_.note(type_name, true); }
  void begin_array() override {}
  void end_array() override {}

 private:
  void note_class(std::uint64_t reference);

  const File& file_;
  const Rules& rules_;
  TextSecrets& secrets_;
  AddDataTexts& texts_;
  BodyStream body_;
  std::uint32_t callees_ = 0;  // that were noted; they come in the order of their numbers
  std::uint64_t last_class_ = 0;
};

// Whether a number is secret by itself or in its place, and by which rule.
RuleId rule_of_integer(const Rules& rules, std::int64_t number, const Slot& slot);

}  // namespace CT::Redact
