// SPDX-License-Identifier: MIT
//
// The second walk through a trace: each record is written anew, with masks for what is secret.
#pragma once

#include <unordered_map>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctredact/ct_add_data_texts.h"
#include "ctredact/ct_body_stream.h"
#include "ctredact/ct_masked_text.h"
#include "ctredact/ct_node_finder.h"
#include "ctredact/ct_record_walk.h"
#include "ctredact/ct_text_secrets.h"
#include "ctwrite/ct_trace_writer.h"

namespace CT::Redact {

class Rewriter final : public RecordHandler {
 public:
  struct Parts {
    const Trace& trace;
    const Rules& rules;
    TextSecrets& secrets;
    const AddDataTexts& texts;
    BodyStream& body;
    Masks& masks;
    Tally& tally;
    Write::TraceWriter& writer;
    RuleId strict;  // masks every text, if it is a rule
  };
  // Borrows all of them.
  explicit Rewriter(const Parts& parts);

  // Whether the last record that was ended could be written. If its payload became too large, it is
  // to be shown once more, `tight`.
  [[nodiscard]] bool is_written() const { return is_written_; }
  void set_tight(bool on) { is_tight_ = on; }

  void begin(const CheckpointView& view, Checkpoint::Type type, const CommonParts& common) override;
  void end() override;
  void unknown(std::uint8_t type) override;
  void enter(Place place) override { place_ = place; }
  void text_reference(std::uint64_t reference) override;
  void callee(const Callee& callee) override;
  void begun_by(std::uint64_t reference) override;
  void number(std::uint32_t number) override { writer_.u32(number); }
  void output(const Checkpoint::String& text) override;
  void inline_text(const Checkpoint::String& text) override;
  void header(std::uint8_t operation, const Checkpoint::String& line) override;
  void plain(Checkpoint::ValueType type) override;
  void integer(std::int64_t number, const Slot& slot) override;
  void real(double number) override { writer_.real(number); }
  void text(const Checkpoint::String& text, const Slot& slot) override;
  void object(std::uint64_t class_entry, std::uint32_t handle) override;
  void resource(std::uint64_t type_name, std::int64_t handle) override;
  void begin_array() override { writer_.begin_array(); }
  void end_array() override { writer_.end_array(); }

 private:
  static constexpr int recent_bits = 12;

  // A text of ADD DATA as it was written: where it lies, and what was changed in it.
  struct Change {
    std::uint32_t begin, end;          // before
    std::uint32_t new_begin, new_end;  // now
  };
  struct Written {
    Write::Reference reference = 0;
    std::vector<Change> changes;
  };

  // The place of what came last for a reference, among those that share it.
  static std::size_t recent_slot(std::uint64_t reference) {
    return (reference * 0x9E3779B97F4A7C15) >> (64 - recent_bits);
  }

  Write::Reference text_of(std::uint64_t reference, Place place);
  void write_text(const AddDataTexts::Text& text, Place place, Written& written);
  Write::Reference class_of(std::uint64_t reference);
  std::string_view masked(std::string_view text, bool is_cut);
  std::string_view masked_whole(std::string_view text, RuleId rule, bool is_cut);
  [[nodiscard]] static std::uint64_t original_size(const Checkpoint::String& before,
                                                   std::string_view after, bool is_whole);
  void count(Place place);

  const Trace& trace_;
  const Rules& rules_;
  TextSecrets& secrets_;
  const AddDataTexts& texts_;
  BodyStream& body_;
  Tally& tally_;
  Write::TraceWriter& writer_;
  RuleId strict_;
  MaskedText mask_;
  NodeFinder nodes_;

  std::unordered_map<std::uint32_t, Written> written_;  // by the number of the text
  std::vector<Write::Reference> functions_;             // by the number of the callee
  std::unordered_map<std::uint64_t, Write::Reference> classes_;
  struct Recent {
    std::uint64_t before = 0;
    Write::Reference now = 0;
  };
  // Texts and classes that come again and again.
  std::vector<Recent> recent_texts_ = std::vector<Recent>(1 << recent_bits);
  std::vector<Recent> recent_classes_ = std::vector<Recent>(1 << recent_bits);

  std::vector<Range> ranges_;
  std::uint32_t writes_ = 0;
  Place place_ = Place::request;
  std::int32_t node_ = Tally::no_node;
  bool is_write_ = false;
  bool is_tight_ = false;
  bool is_written_ = true;
};

}  // namespace CT::Redact
