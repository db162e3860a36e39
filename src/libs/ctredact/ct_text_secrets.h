// SPDX-License-Identifier: MIT
//
// Everything that is secret in a text: what rules say of it by itself, and secrets that were
// learned anywhere in the trace.
#pragma once

#include <string_view>
#include <vector>

#include "ctredact/ct_masked_text.h"
#include "ctredact/ct_secret_set.h"
#include "ctredact/ct_text_rules.h"

namespace CT::Redact {

class TextSecrets {
 public:
  // Borrows: the rules.
  explicit TextSecrets(const Rules& rules) : rules_(rules), text_rules_(rules) {}

  // Learning. A value that is secret as a whole; `is_inherited`: because an array around it is.
  void learn_value(std::string_view value, RuleId rule, bool is_cut, bool is_inherited);
  void learn_text(std::string_view text, bool is_cut);
  void learn_header(std::string_view line, bool is_cut);
  void learn_number(std::int64_t number, RuleId rule) { set_.add(std::to_string(number), rule); }
  // What somebody said is secret, whatever it is.
  void learn_given(std::string_view value, RuleId rule) { set_.add(value, rule); }
  // The end of learning.
  void build() { set_.build(); }

  // Appends what is secret; merged ranges. Requires: build().
  void find(std::string_view text, bool is_cut, std::vector<Range>& out);
  void find_in_header(std::string_view line, bool is_cut, std::vector<Range>& out);
  [[nodiscard]] const SecretSet& set() const { return set_; }

 private:
  void learn(std::string_view text, bool is_cut);
  void learn_one(std::string_view secret, RuleId rule, bool is_cut);
  void learn_password_in(std::string_view secret, RuleId rule);
  void add_found(std::string_view text, bool is_cut, std::vector<Range>& out);

  const Rules& rules_;
  TextRules text_rules_;
  SecretSet set_;
  std::vector<FoundSecret> found_;
};

}  // namespace CT::Redact
